#pragma once

#include <map>
#include <memory>
#include <tuple>

#include "core/GLESUtils/QVFrameBufferToTexture.h"
#include "core/GLESUtils/Texture.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "pictureFilter/Filter.h"

namespace multiscene {

/// Pictures with their filters applied by GL, each filter a program of resources/shaders/filters that draws a
/// whole picture into a texture.
class GLFilters {
  public:
    /// Both outlive it.
    GLFilters(ShaderManager& shaders, platform::FileGate& gate) : shaders_(shaders), gate_(gate) {}

    /// Valid until the next call. Changes framebuffer, viewport, blending and programs: the caller sets his
    /// anew.
    Texture& filtered(Texture& texture, const FilterChain& chain, bool isUpsideDown);
    /// Deletes what it keeps, the context current.
    void release();

  private:
    /// What a filter or a step of a blur reads.
    struct Source {
        Texture* texture;
        FilteredSize size;
    };
    /// Why a target is drawn into: two of a use take turns.
    enum class Use { Picture, Blur };

    QVFrameBufferToTexture& nextTarget(Use use, const FilteredSize& size);
    std::shared_ptr<Shader> shaderFor(const Filter& filter);
    std::shared_ptr<Shader> step(const std::string& name, const std::vector<std::string>& uniforms);
    std::string text(const std::string& file);
    Source drawn(Use use, const FilteredSize& size, Shader& shader, const Source& from);
    Source loaded(Texture& texture, const FilteredSize& size);
    Source blurred(const Source& picture, const Filter& filter, float& scale);
    Source apply(const Source& picture, const Filter& filter);
    void lookAside(Shader& shader, const Source& picture, const Filter& filter);

    ShaderManager& shaders_;
    platform::FileGate& gate_;
    std::map<std::tuple<Use, int, int, int>, std::unique_ptr<QVFrameBufferToTexture>> targets_;
    std::map<Use, int> turns_;
    bool isUpsideDown_ = false;
    Texture noise_;
    /// By the tables that they show, which are kept with them.
    std::map<std::shared_ptr<const platform::ColorTable>, Texture> tables_;
};

}  // namespace multiscene
