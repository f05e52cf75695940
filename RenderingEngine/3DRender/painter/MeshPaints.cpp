#include "painter/MeshPaints.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "painter/LightUniforms.h"
#include "painter/PlaceOnQuad.h"
#include "painter/QuadPaints.h"

namespace multiscene {

using platform::MeshPaint;

namespace {

// --- values of another library --------------------------------------------------------------------------

static_assert(sizeof(MeshVertex) == platform::MeshCorners::kNumbers * sizeof(float));

platform::MeshCorners cornersOf(std::span<const MeshVertex> corners) {
    return {.numbers = &corners.front().position.x, .count = corners.size()};
}

platform::Matrix4 matrixOf(const glm::mat4& matrix) {
    platform::Matrix4 result;
    std::memcpy(result.data(), &matrix[0][0], sizeof result);
    return result;
}

platform::Vector3 vectorOf(const glm::vec3& vector) { return {vector.x, vector.y, vector.z}; }

platform::MeshLight lightOf(const Light& light) {
    using Kind = platform::MeshLightKind;
    return {.kind = light.kind == LightKind::Spot          ? Kind::Spot
                    : light.kind == LightKind::Directional ? Kind::Directional
                                                           : Kind::Point,
            .place = vectorOf(light.position),
            .ambient = vectorOf(light.ambient),
            .diffuse = vectorOf(light.diffuse),
            .specular = vectorOf(light.specular),
            .shininess = light.shininess,
            .coneDirection = vectorOf(light.spotDirection),
            .coneExponent = light.spotExponent,
            .coneCosine = std::cos(light.spotAngle)};
}

// --- pictures -------------------------------------------------------------------------------------------

/// Twice the areas of triangles, in the picture and on the canvas; those that reach behind the eye are left
/// out.
struct Areas {
    double picture = 0, canvas = 0;

    Areas(std::span<const MeshVertex> corners, const glm::mat4& mvpMatrix, const glm::mat4& textureMatrix) {
        for (size_t i = 0; i + 2 < corners.size(); i += 3) {
            std::array<glm::vec2, 3> place, seen;
            bool isBefore = true;
            for (size_t k = 0; k < 3; ++k) {
                const glm::vec4 clip = mvpMatrix * glm::vec4(corners[i + k].position, 1);
                isBefore = isBefore && clip.w > 1e-4f;
                seen[k] = glm::vec2(clip) / clip.w;
                place[k] = glm::vec2(textureMatrix * glm::vec4(corners[i + k].textureCoordinate, 0, 1));
            }
            if (!isBefore) continue;
            picture += areaOf(place);
            canvas += areaOf(seen);
        }
    }

  private:
    static double areaOf(const std::array<glm::vec2, 3>& at) {
        const glm::vec2 a = at[1] - at[0], b = at[2] - at[0];
        return std::abs(double{a.x} * b.y - double{a.y} * b.x);
    }
};

bool setPicture(const Texture& texture, std::span<const MeshVertex> corners, const CanvasSize& canvas,
                const glm::mat4& mvpMatrix, const glm::mat4& textureMatrix, MeshPaint& paint) {
    const auto levels = texture.levels();
    if (levels.empty()) return false;
    paint.picture = levels.front();
    paint.premultiplied = texture.isPremultiplied();
    paint.toPicture = matrixOf(textureMatrix);
    if (levels.size() == 1) return true;
    const Areas areas(corners, mvpMatrix, textureMatrix);
    constexpr double squareOfClip = 4;  // -1 to 1 either way
    paint.picture = levelFor(levels, areas.picture * levels[0].width * levels[0].height,
                             areas.canvas / squareOfClip * canvas.width * canvas.height);
    return true;
}

std::array<float, 4> fourOf(const glm::vec4& color) { return {color.r, color.g, color.b, color.a}; }

}  // namespace

bool addMeshes(const MeshDraw& mesh, const CanvasSize& canvas, std::vector<MeshPaint>& paints) {
    MeshPaint paint{.corners = cornersOf(mesh.corners),
                    .toClip = matrixOf(mesh.mvpMatrix),
                    .toWorld = matrixOf(mesh.modelMatrix),
                    .opacity = 1 - mesh.fade,
                    .isShape = mesh.alphaIsOpacity,
                    .isOpaque = mesh.isOpaque,
                    .blend = paintedBlend(mesh.state.blend),
                    .depthTest = mesh.state.depthTest,
                    .isSmooth = mesh.isSmooth,
                    .eye = vectorOf(mesh.eye),
                    .glow = vectorOf(mesh.emission)};
    if (mesh.color) paint.tint = fourOf(*mesh.color);
    if (mesh.texture &&
        !setPicture(*mesh.texture, mesh.corners, canvas, mesh.mvpMatrix, mesh.textureMatrix, paint))
        return false;
    if (mesh.emissionTexture) {
        if (mesh.emissionTexture->levels().empty()) return false;
        paint.glowPicture = mesh.emissionTexture->levels().front();
        paint.toPicture = matrixOf(mesh.textureMatrix);
    }
    if (mesh.mayRepeat && leavesPicture(mesh.textureMatrix, mesh.cornerCoordinates))
        paint.wrap = platform::Wrap::Repeat;
    for (const Light& light : mesh.lights)
        if (paint.lights.size() < maxLights) paint.lights.push_back(lightOf(light));
    const auto addSide = [&](bool isOutside) {
        paint.facing = isOutside ? platform::MeshFacing::Front : platform::MeshFacing::Back;
        paint.normalToWorld = matrixOf(isOutside ? mesh.normalMatrix : -mesh.normalMatrix);
        paints.push_back(paint);
    };
    if (mesh.sides == MeshSides::Outer) {
        addSide(true);
        return true;
    }
    // A convex shape is in order when what faces away is painted first; where depths say what is seen, the
    // near sides win where they meet the far ones.
    const bool isNearFirst = mesh.isOpaque && mesh.state.depthTest && mesh.state.blend == BlendFunction();
    for (const bool isOutside : {isNearFirst, !isNearFirst}) addSide(isOutside);
    return true;
}

namespace {

/// What a look is as a flat surface; false for what is no plain picture.
struct PaintedFlat {
    MeshPaint& paint;

    bool operator()(const PlainLook& look) const {
        paint.opacity = look.opacity;
        return true;
    }
    bool operator()(const ColorLook& look) const {
        paint.tint = fourOf(look.color);
        paint.opacity = look.opacity;
        return true;
    }
    template <typename Other>
    bool operator()(const Other&) const {
        return false;
    }
};

std::vector<MeshVertex> trianglesOf(const QuadDraw& quad) {
    std::vector<MeshVertex> corners;
    for (const size_t corner : {0u, 1u, 2u, 0u, 2u, 3u}) {
        const float* at = &quad.corners[3 * corner];
        const float* place = &quad.textureCoordinates[2 * corner];
        corners.push_back(
            {.position = {at[0], at[1], at[2]}, .normal = {}, .textureCoordinate = {place[0], place[1]}});
    }
    return corners;
}

}  // namespace

bool addMeshes(const QuadDraw& quad, const CanvasSize& canvas, std::vector<MeshPaint>& paints,
               MadeCorners& corners) {
    MeshPaint paint{.toClip = matrixOf(quad.mvpMatrix),
                    .blend = paintedBlend(quad.state.blend),
                    .depthTest = quad.state.depthTest};
    if (!std::visit(PaintedFlat{paint}, quad.look)) return false;
    std::vector<MeshVertex> triangles = trianglesOf(quad);
    if (!std::holds_alternative<ColorLook>(quad.look) &&
        !setPicture(*quad.texture, triangles, canvas, quad.mvpMatrix, quad.textureMatrix, paint))
        return false;
    if (quad.mayRepeat && leavesPicture(quad)) paint.wrap = platform::Wrap::Repeat;
    paint.corners = cornersOf(corners.emplace_back(std::move(triangles)));
    paints.push_back(paint);
    return true;
}

bool addMeshes(const LettersDraw& letters, const CanvasSize& canvas, std::vector<MeshPaint>& paints) {
    MeshPaint paint{.corners = cornersOf(letters.corners),
                    .toClip = matrixOf(letters.mvpMatrix),
                    .tint = {letters.color.r, letters.color.g, letters.color.b, 1},
                    .opacity = letters.color.a,
                    .isShape = true,
                    .blend = paintedBlend(letters.state.blend),
                    .depthTest = letters.state.depthTest};
    if (!setPicture(*letters.atlas, letters.corners, canvas, letters.mvpMatrix, glm::mat4(1), paint))
        return false;
    paints.push_back(paint);
    return true;
}

}  // namespace multiscene
