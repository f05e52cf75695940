#include "3DObject/SelectShaderObject3D/QVShaderRenderBase.h"

namespace multiscene {

void QVShaderRenderBase::renderInfoWithDic(const platform::Value& info) {
    const platform::Value::Array& keys = info.array("AnimationInfo");
    if (!keys.empty()) keyAnimation_ = std::make_unique<QVKeyAnimationOperators>(keys, *this);
}

void QVShaderRenderBase::updateData(const platform::CMTime& time) {
    if (keyAnimation_) keyAnimation_->updateData(time.value);
}

}  // namespace multiscene
