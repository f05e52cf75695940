#pragma once

#include <array>
#include <optional>

#include "3DObject/FTGLTextObject/FaceTexture.h"
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
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    Made makeLetters(const platform::LetterText& text) override;
    void drawLetters(Painter& painter) override;
    void dropLetters() override;

  private:
    /// Of the front, the cut edges, the sides, and one that nothing has.
    using Colors = std::array<std::array<uint8_t, 4>, 4>;

    glm::vec4 shown(const std::optional<platform::Color>& color, float unlit) const;
    void fillColors();
    bool isOpaque(const Texture& texture) const;
    void loadFace(FaceTexture& face);
    void drawFace(Painter& painter, const FaceTexture& face, const DrawnLetters& letters, float opacity);
    void drawFaces(Painter& painter, Texture& texture, const DrawnLetters& letters, float opacity,
                   const glm::mat4& textureMatrix = glm::mat4(1));

    platform::SolidLook look_;
    std::optional<platform::Color> sideColor_, bevelColor_;
    FaceTexture front_, side_;
    DrawnLetters letters_, fronts_, sides_, colored_;
    std::optional<Colors> filled_;
    Texture colors_;  ///< the same, a texel each
    Texture atlas_;   ///< the faces of emoji
};

}  // namespace multiscene
