#pragma once

#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"

namespace multiscene {

/// A frame of a picture book: "frameType" says whether it is the picture as it is, the picture through an
/// image filter and within a border, or one colour. Its opacity is animated as a transparent quad's.
class QVQuadFrameObject3D : public QVQuadDiaphaneityObject3D {
  public:
    const char* className() const override { return "QVQuadFrameObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    void updateDue(const Tick& tick) override;
    Look look() const override;

  private:
    enum class FrameType { Image, Filter, Color };

    /// Width and height of the picture, of any unit when they are not known.
    glm::vec2 pictureSize() const;
    /// 0 to 1 over the node's frames; over a hundred, again and again, when they have no end.
    float normalTime(int64_t frame) const;

    FrameType frameType_ = FrameType::Image;
    FilterLook filter_;
    glm::vec4 frameColor_{0};
};

}  // namespace multiscene
