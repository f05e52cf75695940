#pragma once

#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"

namespace multiscene {

/// A frame of a picture book: "frameType" says whether it is the picture as it is, the picture through an
/// image filter and within a border, or one colour. Its opacity is animated as a transparent quad's.
class QVQuadFrameObject3D : public QVQuadDiaphaneityObject3D {
  public:
    const char* className() const override { return "QVQuadFrameObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void updateData(const platform::CMTime& time) override;
    void render(const platform::CMTime& time) override;

  protected:
    const char* shaderName() const override;
    void setUniforms(Shader& shader) override;
    void drawQuad(Shader& shader) override;

  private:
    enum class FrameType { Image, Filter, Color };
    struct Filter {
        int type = 0;         ///< the shader's number
        float range = 1;      ///< how much of it shows
        float pixelSize = 1;  ///< of a mosaic, pixels of the picture
        float borderWidth = 0;
        glm::vec4 pictureColor{1};
        bool isReflection = false;
    };

    /// Width and height of the picture, of any unit when they are not known.
    glm::vec2 pictureSize() const;
    /// 0 to 1 over the node's frames; over a hundred, again and again, when they have no end.
    float normalTime(int64_t frame) const;
    void drawColor();

    FrameType frameType_ = FrameType::Image;
    Filter filter_;
    glm::vec4 frameColor_{0};
    float filterNormalTime_ = 0;
};

}  // namespace multiscene
