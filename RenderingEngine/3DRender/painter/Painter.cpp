#include "painter/Painter.h"

#include <utility>

namespace multiscene {

namespace {

bool isShown(const Texture* texture) { return texture && !texture->isEmpty(); }

bool needsPicture(const Look& look) {
    const auto* filter = std::get_if<FilterLook>(&look);
    return !std::holds_alternative<ColorLook>(look) &&
           !(filter && filter->borderWidth >= FilterLook::borderAlone);
}

}  // namespace

void Painter::draw(QuadDraw quad) {
    const auto* mask = std::get_if<MaskLook>(&quad.look);
    if (needsPicture(quad.look) && !isShown(quad.texture)) return;
    if (mask && !isShown(mask->mask)) return;
    quad.state = state_;
    paint(quad);
}

void Painter::draw(LettersDraw letters) {
    if (letters.corners.empty() || !isShown(letters.atlas)) return;
    letters.state = state_;
    paint(letters);
}

void Painter::draw(MeshDraw mesh) {
    if (!isShown(mesh.texture)) mesh.texture = nullptr;
    if (!isShown(mesh.emissionTexture)) mesh.emissionTexture = nullptr;
    if (mesh.corners.empty() || !(mesh.color || mesh.texture)) return;
    mesh.state = state_;
    mesh.state.depthTest = state_.depthTest || mesh.comparesDepths;
    paint(mesh);
}

}  // namespace multiscene
