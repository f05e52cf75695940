#pragma once

#include <memory>

#include "platform/base/Value.h"

namespace multiscene {

class Painter;

/// A way of drawing that a quad can hand its drawing to, with key frames of its own. Owned by the quad;
/// render queue.
class QVShaderRenderBase {
  public:
    virtual ~QVShaderRenderBase() = default;

    /// Reads the render-info dictionary.
    virtual void renderInfoWithDic(const platform::Value& info) = 0;
    virtual void updateData(int64_t /*frame*/) {}
    virtual void render(Painter&) {}
    /// What it animates, for traces.
    virtual void addTraceValues(platform::Value::Dictionary&) const {}
};

}  // namespace multiscene
