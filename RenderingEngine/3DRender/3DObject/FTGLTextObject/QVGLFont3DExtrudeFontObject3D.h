#pragma once

#include <array>
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

    float textDepth() const { return look_.depth; }  ///< model units

  protected:
    Made makeLetters(const platform::LetterText& text) override;
    void drawLetters(Painter& painter) override;
    void dropLetters() override;

  private:
    /// Of the front, the cut edges, the sides, and one that nothing has.
    using Colors = std::array<std::array<uint8_t, 4>, 4>;

    glm::vec4 shown(const std::optional<platform::Color>& color, float unlit) const;
    void fillColors();
    void drawFaces(Painter& painter, Texture& texture, const DrawnLetters& letters, float opacity);

    platform::SolidLook look_;
    std::optional<platform::Color> sideColor_, bevelColor_;
    DrawnLetters letters_, colored_;
    std::optional<Colors> filled_;
    Texture colors_;  ///< the same, a texel each
    Texture atlas_;   ///< the faces of emoji
};

}  // namespace multiscene
