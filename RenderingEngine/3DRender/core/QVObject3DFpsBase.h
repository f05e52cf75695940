#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "core/GLESUtils/QVFrameBufferToTexture.h"
#include "core/QVObjectContainer3D.h"

namespace multiscene {

class Shader;

extern const KeyTable fpsBaseKeys;

/// A node with a frame range, a depth, a state for what is drawn within it, and key frames.
class QVObject3DFpsBase : public QVObjectContainer3D {
  public:
    /// The GL blend factor of a name as scene files spell it, exactly; 0 for any other.
    static uint32_t blendParmeWithString(std::string_view name);

    /// The size of the texture that a node with this "FpsInfo" draws into; none when it draws into the
    /// picture.
    static std::optional<glm::ivec2> targetSizeOf(const platform::Value& fpsInfo);

    /// True from sartFps to endFps, both inclusive.
    bool isDueAt(int64_t frame) const { return sartFps_ <= frame && frame <= endFps_; }

    int64_t sartFps() const { return sartFps_; }
    int64_t endFps() const { return endFps_; }
    bool isEnableDephTest() const { return isEnableDephTest_; }
    bool isChangeBlend() const { return isChangeBlend_; }
    uint32_t srcBlend() const { return srcBlend_; }
    uint32_t dstBlend() const { return dstBlend_; }
    bool isRenderToTexture() const { return isRenderToTexture_; }
    /// The template's own program; none without one.
    const std::shared_ptr<Shader>& customShader() const { return customShader_; }

    void rendInfoWithDic(const platform::Value& info) override;
    void renderTargets(Painter& painter, const Tick& tick) override;
    void renderingBeforeConfig(Painter& painter, const Tick& tick) override;
    /// draw(), in the node's frames.
    void render(Painter& painter, const Tick& tick) final {
        if (isDueAt(tick.frame)) draw(painter);
    }
    /// Closing any node's bracket turns the depth test off and resets the blend function, whatever they were.
    void renderingAfterConfig(Painter& painter, const Tick& tick) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;

  protected:
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    /// Says what is to be drawn of the node itself, and changes nothing.
    virtual void draw(Painter&) {}
    /// Reads the keys of "AnimationInfo". The base animates nothing.
    virtual void animationWithInfo(const platform::Value::Array&) {}
    /// Shows what the keys say of a frame; after the children, components and lights.
    virtual void updateKeyFrames(int64_t) {}
    /// The identifier and the resource folder of the node's scene; empty without one.
    std::string sceneIdentifier() const;
    std::string sceneResourceFolderPath() const;
    /// A path of the scene file with its macros resolved against the scene's folder.
    std::string resolvedPath(const std::string& path) const;

  private:
    static std::optional<glm::ivec2> targetSizeOf(const KeyReader& fpsInfo);
    void readFrameRange(const platform::Value& fpsInfo);
    void readBlend(const KeyReader& fpsInfo);
    void readCustomShader(const KeyReader& fpsInfo);
    void readRenderToTexture(const KeyReader& fpsInfo);

    int64_t sartFps_ = 0;
    int64_t endFps_ = INT64_MAX;
    bool isEnableDephTest_ = false, isChangeBlend_ = false, isRenderToTexture_ = false;
    uint32_t srcBlend_ = 0, dstBlend_ = 0;
    std::shared_ptr<QVFrameBufferToTexture> frameBufferToTexture_;  // shared with the scene's texture map
    std::shared_ptr<Shader> customShader_;
};

}  // namespace multiscene
