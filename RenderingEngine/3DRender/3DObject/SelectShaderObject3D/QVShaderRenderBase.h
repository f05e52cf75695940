#pragma once

#include <memory>

#include "opengl2.0/Shader.h"
#include "platform/base/CMTime.h"
#include "platform/base/Value.h"

namespace multiscene {

/// A way of drawing that a quad can hand its drawing to, with key frames of its own. Owned by the quad;
/// render queue, GL context current.
class QVShaderRenderBase {
  public:
    virtual ~QVShaderRenderBase() = default;

    /// Reads the render-info dictionary.
    virtual void renderInfoWithDic(const platform::Value& info) = 0;
    virtual void updateData(const platform::CMTime&) {}
    virtual void render(const platform::CMTime&) {}
    /// What it animates, for traces.
    virtual void addTraceValues(platform::Value::Dictionary&) const {}

    const std::shared_ptr<Shader>& shader() const { return shader_; }

  protected:
    void setShader(std::shared_ptr<Shader> shader) { shader_ = std::move(shader); }

  private:
    std::shared_ptr<Shader> shader_;
};

}  // namespace multiscene
