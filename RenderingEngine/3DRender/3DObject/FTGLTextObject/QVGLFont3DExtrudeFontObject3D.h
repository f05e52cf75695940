#pragma once

#include <optional>

#include "3DObject/FTGLTextObject/QVGLFontTextObjectBase.h"
#include "core/GLESUtils/Texture.h"

namespace multiscene {

/// Letters with a depth, lit when the node is. Seen from nearly in front they need no depth test: their sides
/// are drawn before their faces. Seen from the side only the depth test puts them in order.
class QVGLFont3DExtrudeFontObject3D : public QVGLFontTextObjectBase {
  public:
    const char* className() const override { return "QVGLFont3DExtrudeFontObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

    float textDepth() const { return textDepth_; }  ///< model units

  protected:
    std::vector<char32_t> makeLetters(const platform::LetterText& text) override;
    void drawLetters(Painter& painter) override;
    void dropLetters() override;

  private:
    glm::vec4 shownSideColor() const;
    void fillColors();
    void drawFaces(Painter& painter, Texture& texture, const std::vector<MeshVertex>& triangles, float fade);

    float textDepth_ = 0;
    std::optional<platform::Color> sideColor_;
    std::vector<MeshVertex> triangles_, coloredTriangles_;
    Texture colors_;  ///< one texel for the faces, one for the sides
    Texture atlas_;   ///< the faces of emoji
};

}  // namespace multiscene
