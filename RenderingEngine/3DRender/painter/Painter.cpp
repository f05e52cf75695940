#include "painter/Painter.h"

#include <algorithm>
#include <utility>

namespace multiscene {

namespace {

bool isShown(const Texture* texture) { return texture && !texture->isEmpty(); }

bool needsPicture(const Look& look) {
    const auto* filter = std::get_if<FilterLook>(&look);
    return !std::holds_alternative<ColorLook>(look) &&
           !(filter && filter->borderWidth >= FilterLook::borderAlone);
}

/// Eases lead beyond both ends; what no number is stands for nothing.
float within(float part) { return std::min(std::max(0.0f, part), 1.0f); }

glm::vec4 within(const glm::vec4& color) {
    return {within(color.r), within(color.g), within(color.b), within(color.a)};
}

void bound(Look& look) {
    std::visit(
        [](auto& any) {
            if constexpr (requires { any.opacity; }) any.opacity = within(any.opacity);
        },
        look);
    if (auto* one = std::get_if<ColorLook>(&look)) one->color = within(one->color);
}

}  // namespace

void Painter::draw(QuadDraw quad) {
    const auto* mask = std::get_if<MaskLook>(&quad.look);
    if (needsPicture(quad.look) && !isShown(quad.texture)) return;
    if (mask && !isShown(mask->mask)) return;
    bound(quad.look);
    quad.state = state_;
    paint(quad);
}

void Painter::draw(LettersDraw letters) {
    if (letters.corners.empty() || !isShown(letters.atlas)) return;
    letters.color = within(letters.color);
    letters.state = state_;
    paint(letters);
}

void Painter::draw(MeshDraw mesh) {
    if (!isShown(mesh.texture)) mesh.texture = nullptr;
    if (!isShown(mesh.emissionTexture)) mesh.emissionTexture = nullptr;
    if (mesh.corners.empty() || !(mesh.color || mesh.texture)) return;
    mesh.fade = within(mesh.fade);
    mesh.state = state_;
    mesh.state.depthTest = state_.depthTest || mesh.comparesDepths;
    paint(mesh);
}

}  // namespace multiscene
