#include "3DObject/FTGLTextObject/QVGLFont2DTextureFontObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

constexpr KeyTable font2DKeys{"QVGLFont2DTextureFontObject3D", "Flat letters.", &fontObjectKeys, {}};

QV_REGISTER_NODE_TYPE(QVGLFont2DTextureFontObject3D, font2DKeys);

std::vector<char32_t> QVGLFont2DTextureFontObject3D::makeLetters(const platform::LetterText& text) {
    platform::FlatLetters letters = platform::flatLetters(text);
    if (!letters.atlas.isEmpty()) atlas_.setPicture(std::move(letters.atlas));
    triangles_ = verticesOf(letters.triangles);
    coloredTriangles_ = verticesOf(letters.coloredTriangles);
    return std::move(letters.leftOut);
}

void QVGLFont2DTextureFontObject3D::drawLetters(Painter& painter) {
    const auto drawIn = [&](const std::vector<MeshVertex>& corners, const glm::vec4& color) {
        painter.draw(LettersDraw{
            .corners = corners, .atlas = &atlas_, .color = color, .mvpMatrix = projTransform(), .state = {}});
    };
    drawIn(triangles_, shownColor());
    // Emoji keep their own colours.
    drawIn(coloredTriangles_, glm::vec4(1, 1, 1, shownColor().a));
}

}  // namespace multiscene
