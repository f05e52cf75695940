#include "3DObject/MeshObject3D/QVMeshObject3D.h"

#include <algorithm>
#include <cmath>
#include <glm/gtc/matrix_transform.hpp>

#include "3DObject/MeshObject3D/SceneLight.h"
#include "3DObject/QuadObject3D/QVQuadDiaphaneityObject3D.h"
#include "core/Material/QVSignColorMaterial.h"
#include "core/Material/QVTextureMaterial.h"
#include "core/QVScene3D.h"
#include "core/SkippedMedia.h"
#include "dataMode/TextSettings.h"
#include "format/NodeTypes.h"
#include "painter/Painter.h"
#include "painter/PlaceOnQuad.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key meshInfoKeyList[] = {
    {.name = "modelWidth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "size along x",
     .required = true},
    {.name = "modelHeight",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "size along y",
     .required = true},
    {.name = "modelDepth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "size along z, of cubes"},
    {.name = "anchorX",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "centre, x"},
    {.name = "anchorY",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "centre, y"},
    {.name = "anchorZ",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "centre, z"},
};
const KeyTable meshInfoKeys{"MeshInfo", "The size of a plane or cube.", nullptr, meshInfoKeyList};

static constexpr Key meshKeyList[] = {
    {.name = "ColorInfo",
     .type = KeyType::Dictionary,
     .meaning = "one colour instead of a texture",
     .children = &signColorKeys},
};
const KeyTable meshKeys{"Lit surfaces", "What takes light: meshes, curved surfaces, planes and cubes.",
                        &textureBaseKeys, meshKeyList};

static constexpr std::string_view originOfFile = "file", originInMiddle = "middle", originOnFloor = "floor";
static constexpr std::string_view origins[] = {originOfFile, originInMiddle, originOnFloor};
static constexpr Key meshFileInfoKeyList[] = {
    {.name = "meshFile",
     .type = KeyType::Text,
     .meaning = "a glTF 2.0 file (.glb, .gltf) or a Wavefront object (.obj); buffers, materials and pictures "
                "that it names lie beside it",
     .lookup = KeyLookup::Path,
     .required = true,
     .file = KeyFile::Mesh},
    {.name = "modelSize",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "the longest side of its box at rest; 0: as large as the file says",
     .minimum = 0,
     .maximum = 100'000},
    {.name = "meshOrigin",
     .type = KeyType::Choice,
     .fallback = "file",
     .meaning = "what lies at the node's place: the file's own origin, the middle of the mesh's box, or the "
                "middle of its underside",
     .choices = origins},
    {.name = "animationName",
     .type = KeyType::Text,
     .meaning =
         "the animation of the file that is played; none: the first. A second of the file takes as many "
         "frames as \"videoFps\" of the scene's clock says, from the node's first frame on"},
    {.name = "animationSpeed",
     .type = KeyType::Number,
     .fallback = "1",
     .meaning = "2 plays it twice as fast; 0 holds its start",
     .minimum = 0,
     .maximum = 100},
    {.name = "isLoop",
     .type = KeyType::Bool,
     .fallback = "1",
     .meaning = "the animation begins anew when it has ended; else its end stays"},
    {.name = "pictureMaterial",
     .type = KeyType::Text,
     .meaning = "the name of the material in the file that shows \"TextureInfo\" or \"ColorInfo\" instead of "
                "its own; none: all do. Without them materials look as the file says"},
};
constexpr KeyTable meshFileInfoKeys{"MeshFileInfo", "A mesh file and how it is shown.", nullptr,
                                    meshFileInfoKeyList};

static constexpr Key meshFileKeyList[] = {
    {.name = "MeshFileInfo",
     .type = KeyType::Dictionary,
     .meaning = "the mesh",
     .required = true,
     .children = &meshFileInfoKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the opacity; without any it is 1",
     .children = &alphaAnimationKeys},
};
constexpr KeyTable meshFileKeys{"QVMeshObject3D",
                                "A mesh from a file, which takes light; depths are always compared.",
                                &meshKeys, meshFileKeyList};

QV_REGISTER_NODE_TYPE(QVMeshObject3D, meshFileKeys);

void QVMeshObject3D::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTextureBase::rendInfoWithDic(info);
    const KeyReader reader(meshKeys, info);
    readShape(info);
    if (reader.has("ColorInfo"))
        setMaterial(std::make_shared<QVSignColorMaterial>(reader.value("ColorInfo")));
}

void QVMeshObject3D::readShape(const platform::Value& info) {
    const KeyReader reader(meshFileInfoKeys, info["MeshFileInfo"]);
    const auto number = [&](const char* key) { return readInRange(reader, meshFileInfoKeys, key); };
    showing_ = {.file = reader.text("meshFile"),
                .size = number("modelSize"),
                .origin = reader.text("meshOrigin"),
                .animation = reader.text("animationName"),
                .speed = number("animationSpeed"),
                .loops = reader.boolean("isLoop"),
                .texturedPart = reader.text("pictureMaterial")};
}

void QVMeshObject3D::animationWithInfo(const platform::Value::Array& keys) {
    opacity_.read(keys, alphaAnimationKeys, "startRenderAlpha", "endRenderAlpha");
}

// --- shapes ---------------------------------------------------------------------------------------------

QVMeshObject3D::Box QVMeshObject3D::boxOf(const platform::Value& meshInfo) {
    const KeyReader mesh(meshInfoKeys, meshInfo);
    return {.size = {mesh.number("modelWidth"), mesh.number("modelHeight"), mesh.number("modelDepth")},
            .centre = {mesh.number("anchorX"), mesh.number("anchorY"), mesh.number("anchorZ")}};
}

void QVMeshObject3D::addSide(const Box& box, int axis, float direction, std::vector<MeshVertex>& corners) {
    // Right and up of the side as seen from outside.
    glm::vec3 normal(0), up(0, 1, 0);
    normal[axis] = direction;
    if (axis == 1) up = {0, 0, -direction};
    const glm::vec3 right = glm::cross(up, normal);
    const glm::vec3 half = box.size / 2.0f;
    for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}})
        corners.push_back(
            {.position =
                 box.centre + half * (normal + static_cast<float>(x) * right + static_cast<float>(y) * up),
             .normal = normal,
             .textureCoordinate = {static_cast<float>(x + 1) / 2, static_cast<float>(1 - y) / 2}});
}

bool QVMeshObject3D::isOpaque() const {
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(material());
    return flat ? flat->a() >= 1 : texture() && texture()->isOpaque();
}

void QVMeshObject3D::drawShape(Painter& painter, const Shape& shape) {
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(material());
    const bool hasTexture = textureMaterial() && textureMaterial()->hasTexture();
    if (!hasTexture && !flat) return;
    MeshDraw mesh{.corners = shape.corners,
                  .kept = shape.kept,
                  .sides = shape.sides,
                  .isSmooth = shape.isSmooth,
                  .comparesDepths = shape.comparesDepths,
                  .shader = "normal_lightShader",
                  .color = flat ? std::optional(flat->color()) : std::nullopt,
                  .fade = 1 - shape.opacity,
                  .texture = hasTexture ? texture() : nullptr,
                  .cornerCoordinates = cornerPlaces,
                  .mvpMatrix = projTransform(),
                  .textureMatrix = textureMatrix() * coordinatesFromPlace(masterTextureCoordinates()),
                  .lights = {},
                  .mayRepeat = hasTexture && textureMaterial()->mayRepeat(),
                  .isOpaque = isOpaque() && shape.opacity >= 1,
                  .state = {}};
    addSceneLight(mesh, *this);
    painter.draw(std::move(mesh));
}

void QVMeshObject3D::draw(Painter& painter) {
    if (model_) return drawModel(painter);
    drawShape(painter, {.corners = triangles_.corners(), .kept = &triangles_, .sides = MeshSides::Both});
}

// --- mesh files -----------------------------------------------------------------------------------------

void QVMeshObject3D::updateDue(const Tick& tick) {
    QVObject3DTextureBase::updateDue(tick);
    if (tick.isNew && tick.frame == sartFps()) loadModel();
    if (model_) moveModel(tick.frame);
}

void QVMeshObject3D::completeDue(const Tick& tick) {
    QVObject3DTextureBase::completeDue(tick);
    if (tick.frame == endFps()) model_.reset();
}

void QVMeshObject3D::loadModel() {
    model_.reset();
    Playback* const played = playback();
    if (!played || showing_.file.empty()) return;
    const std::string path = resolvedPath(showing_.file);
    try {
        model_ = std::make_unique<MeshModel>(path, played->gate());
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        return reportSkipped(*this, "unreadable mesh",
                             (path.empty() ? showing_.file : path) + ": " + error.message());
    }
    place_ = placeOfModel();
    for (const std::string& picture : model_->missingPictures())
        reportSkipped(*this, "missing or unreadable picture of a mesh", picture);
    for (const std::string& what : model_->leftOut())
        reportUsedOtherwise(*this, "is shown without its " + what, path);
    if (!showing_.animation.empty() && !model_->animation(showing_.animation))
        reportSkipped(*this, "missing animation of a mesh", showing_.animation);
    if (!showing_.texturedPart.empty() && !model_->hasMaterial(showing_.texturedPart))
        reportSkipped(*this, "missing material of a mesh", showing_.texturedPart);
}

glm::mat4 QVMeshObject3D::placeOfModel() const {
    const ModelBox& box = model_->box();
    const glm::vec3 size = box.size();
    const float longest = std::max({size.x, size.y, size.z});
    const float scale = showing_.size > 0 && longest > 0 ? showing_.size / longest : 1;
    glm::vec3 origin(0);
    if (showing_.origin != originOfFile) origin = box.middle();
    if (showing_.origin == originOnFloor) origin.y = box.least.y;
    return glm::translate(glm::scale(glm::mat4(1), glm::vec3(scale)), -origin);
}

/// By whole frames of the scene's clock, so that any frame shows the same however it is reached.
void QVMeshObject3D::moveModel(int64_t frame) {
    const platform::MeshAnimation* animation = model_->animation(showing_.animation);
    if (!animation) return;
    constexpr int32_t usualRate = 30;
    const auto owner = scene();
    const int32_t timescale = owner ? owner->currentRenderTime().timescale : 0;
    const double rate = timescale > 0 ? timescale : usualRate;
    double seconds = static_cast<double>(frame - sartFps()) / rate * showing_.speed;
    if (showing_.loops && animation->seconds > 0) seconds = std::fmod(seconds, double{animation->seconds});
    model_->setPose(animation, seconds);
}

bool QVMeshObject3D::showsOwnTexture(const MeshModel::Material& material) const {
    return showing_.texturedPart.empty() || showing_.texturedPart == material.info.name;
}

MeshDraw QVMeshObject3D::drawOf(const MeshModel::Part& part) {
    const MeshModel::Material& material = *part.material;
    const platform::Color& color = material.info.color;
    const glm::mat4 place = place_ * model_->pose()[part.node];
    MeshDraw mesh{
        .corners = part.triangles->corners(),
        .kept = part.triangles,
        .sides = material.info.isDoubleSided ? MeshSides::Both : MeshSides::Outer,
        .isSmooth = part.isSmooth,
        .comparesDepths = true,
        .shader = "normal_lightShader",
        .color = glm::vec4(color.red, color.green, color.blue, color.alpha),
        .fade = 1 - opacity_.value(),
        .texture = material.picture.get(),
        .emission = {material.info.emission[0], material.info.emission[1], material.info.emission[2]},
        .emissionTexture = material.emissionPicture.get(),
        .cornerCoordinates = part.triangles->reachedCoordinates(),
        .mvpMatrix = projTransform() * place,
        .lights = {},
        .mayRepeat = true,
        .isOpaque = material.isOpaque && opacity_.value() >= 1,
        .state = {}};
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(this->material());
    const bool hasTexture = textureMaterial() && textureMaterial()->hasTexture();
    if ((flat || hasTexture) && showsOwnTexture(material)) {
        const bool shinesAsItLooks = material.info.picture == material.info.emissionPicture;
        mesh.color = flat ? std::optional(flat->color()) : std::nullopt;
        mesh.texture = hasTexture ? texture() : nullptr;
        if (mesh.emissionTexture && shinesAsItLooks) mesh.emissionTexture = mesh.texture;
        mesh.textureMatrix = textureMatrix() * coordinatesFromPlace(masterTextureCoordinates());
        mesh.mayRepeat = hasTexture && textureMaterial()->mayRepeat();
        mesh.isOpaque = isOpaque() && opacity_.value() >= 1;
    }
    addSceneLight(mesh, *this, place);
    if (!material.info.isLit) mesh.lights.clear();
    return mesh;
}

/// What can be seen through is drawn after all else, the farthest first.
void QVMeshObject3D::drawModel(Painter& painter) {
    if (!(opacity_.value() > 0)) return;
    std::vector<std::pair<float, MeshDraw>> clear;
    for (const MeshModel::Part& part : model_->parts()) {
        MeshDraw mesh = drawOf(part);
        if (mesh.isOpaque || part.material->isOpaque) {
            painter.draw(std::move(mesh));
            continue;
        }
        const glm::vec3 middle(mesh.modelMatrix * glm::vec4(part.triangles->box().middle(), 1));
        clear.emplace_back(glm::distance(middle, mesh.eye), std::move(mesh));
    }
    std::ranges::stable_sort(clear, std::greater(), [](const auto& each) { return each.first; });
    for (auto& [distance, mesh] : clear) painter.draw(std::move(mesh));
}

}  // namespace multiscene
