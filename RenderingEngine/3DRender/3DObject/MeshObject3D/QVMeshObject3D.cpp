#include "3DObject/MeshObject3D/QVMeshObject3D.h"

#include "3DObject/MeshObject3D/SceneLight.h"
#include "core/Material/QVSignColorMaterial.h"
#include "core/Material/QVTextureMaterial.h"
#include "format/NodeTypes.h"
#include "painter/Painter.h"

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
    {.name = "MeshInfo", .type = KeyType::Dictionary, .meaning = "size and place", .children = &meshInfoKeys},
    {.name = "ColorInfo",
     .type = KeyType::Dictionary,
     .meaning = "one colour instead of a texture",
     .children = &signColorKeys},
};
const KeyTable meshKeys{"QVMeshObject3D", "The base of planes and cubes; draws nothing itself.",
                        &textureBaseKeys, meshKeyList};

QV_REGISTER_NODE_TYPE(QVMeshObject3D, meshKeys);

void QVMeshObject3D::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTextureBase::rendInfoWithDic(info);
    const KeyReader reader(meshKeys, info);
    const KeyReader mesh(meshInfoKeys, reader.value("MeshInfo"));
    faces_ =
        facesOf({.size = {mesh.number("modelWidth"), mesh.number("modelHeight"), mesh.number("modelDepth")},
                 .centre = {mesh.number("anchorX"), mesh.number("anchorY"), mesh.number("anchorZ")}});
    if (reader.has("ColorInfo"))
        setMaterial(std::make_shared<QVSignColorMaterial>(reader.value("ColorInfo")));
}

MeshFace QVMeshObject3D::boxFace(const Box& box, int axis, float direction) {
    // Right and up of the face as seen from outside.
    glm::vec3 normal(0), up(0, 1, 0);
    normal[axis] = direction;
    if (axis == 1) up = {0, 0, -direction};
    const glm::vec3 right = glm::cross(up, normal);
    const glm::vec3 half = box.size / 2.0f;
    MeshFace face{.corners = {}, .normal = normal};
    const std::array<glm::vec2, 4> signs{{{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}};
    for (size_t corner = 0; corner < signs.size(); ++corner) {
        const glm::vec3 place = box.centre + half * (normal + signs[corner].x * right + signs[corner].y * up);
        for (int i = 0; i < 3; ++i) face.corners[corner * 3 + static_cast<size_t>(i)] = place[i];
    }
    return face;
}

bool QVMeshObject3D::isOpaque() const {
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(material());
    return flat ? flat->a() >= 1 : texture() && texture()->isOpaque();
}

/// Two triangles a face, with normals to either side.
void QVMeshObject3D::makeTriangles() {
    coordinates_ = masterTextureCoordinates();
    outside_.clear();
    for (const MeshFace& face : faces_)
        for (const size_t corner : {0u, 1u, 2u, 0u, 2u, 3u}) {
            const float* at = &face.corners[3 * corner];
            const float* place = &coordinates_[2 * corner];
            outside_.push_back({.position = {at[0], at[1], at[2]},
                                .normal = face.normal,
                                .textureCoordinate = {place[0], place[1]}});
        }
    inside_ = outside_;
    for (MeshVertex& vertex : inside_) vertex.normal = -vertex.normal;
}

void QVMeshObject3D::draw(Painter& painter) {
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(material());
    const bool hasTexture = textureMaterial() && textureMaterial()->hasTexture();
    if (!hasTexture && !flat) return;
    if (outside_.empty() || coordinates_ != masterTextureCoordinates()) makeTriangles();
    MeshDraw mesh{.outside = outside_,
                  .inside = inside_,
                  .sides = MeshSides::Both,
                  .shader = "normal_lightShader",
                  .color = flat ? std::optional(flat->color()) : std::nullopt,
                  .texture = texture(),
                  .cornerCoordinates = coordinates_,
                  .mvpMatrix = projTransform(),
                  .textureMatrix = textureMatrix(),
                  .lights = {},
                  .mayRepeat = hasTexture && textureMaterial()->mayRepeat(),
                  .isOpaque = isOpaque(),
                  .state = {}};
    addSceneLight(mesh, *this);
    painter.draw(std::move(mesh));
}

}  // namespace multiscene
