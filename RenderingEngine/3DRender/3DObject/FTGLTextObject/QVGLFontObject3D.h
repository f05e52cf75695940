#pragma once

#include "core/QVObject3DTransformBase.h"

namespace multiscene {

extern const KeyTable fontObjectKeys;

/// The base of the font text objects. They are taken with all settings of a moving node and with their
/// children, but their letters are not drawn: the render report says so. "text2d" textures draw text.
class QVGLFontObject3D : public QVObject3DTransformBase {
  public:
    void rendInfoWithDic(const platform::Value& info) override;
};

}  // namespace multiscene
