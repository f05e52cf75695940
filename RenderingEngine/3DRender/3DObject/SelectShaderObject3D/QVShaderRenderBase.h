#pragma once

#include <memory>

#include "core/KeyAnimationTarget.h"
#include "core/QVKeyAnimationOperators.h"
#include "opengl2.0/Shader.h"
#include "platform/base/CMTime.h"

namespace multiscene {

/// A way of drawing that a quad can hand its drawing to, with key frames of its own. Owned by the quad;
/// render queue, GL context current.
class QVShaderRenderBase : public KeyAnimationTarget {
  public:
    /// Reads the render-info dictionary; a class calls its base first.
    virtual void renderInfoWithDic(const platform::Value& info);
    virtual void updateData(const platform::CMTime& time);
    virtual void render(const platform::CMTime&) {}
    void didNewKeyFrameWithEaseValue(float, float, const platform::Value&) override {}
    /// What it animates, for traces.
    virtual void addTraceValues(platform::Value::Dictionary&) const {}

    const std::shared_ptr<Shader>& shader() const { return shader_; }
    const QVKeyAnimationOperators* keyAnimation() const { return keyAnimation_.get(); }

  protected:
    void setShader(std::shared_ptr<Shader> shader) { shader_ = std::move(shader); }

  private:
    std::shared_ptr<Shader> shader_;
    std::unique_ptr<QVKeyAnimationOperators> keyAnimation_;
};

}  // namespace multiscene
