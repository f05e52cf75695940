#include "3DObject/MeshObject3D/QVMeshObject3D.h"

#include <epoxy/gl.h>

#include "3DObject/MeshObject3D/SceneLight.h"
#include "core/GLESUtils/DrawQuad.h"
#include "core/Material/QVSignColorMaterial.h"
#include "core/Material/QVTextureMaterial.h"
#include "core/NodeTypes.h"
#include "opengl2.0/TexturedQuad.h"

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

void QVMeshObject3D::render(const platform::CMTime& time) {
    if (!isNeedRenderWithCMTime(time) || faces_.empty()) return;
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(material());
    if (textureId() == 0 && !flat) return;
    const auto shader = shaderForSceneLight("normal_lightShader", *this);
    shader->useShader();
    shader->setUniform("isOneColor", flat ? 1 : 0);
    if (flat) shader->setUniform("SourceColor", flat->color());
    setTexture(*shader);
    shader->setUniform("u_mvpMatrix", projTransform());
    shader->setUniform("sentColors", GLState::sentColors());
    setSceneLight(*shader, *this);
    drawFaces(*shader);
}

void QVMeshObject3D::setTexture(Shader& shader) const {
    bindTexture(shader, "videoFrame", 0, textureId());
    shader.setUniform("u_textureMatrix", textureMatrix());
    const QVTextureMaterial* shown = textureMaterial();
    shader.setUniform("isPreMultiplication", shown && shown->isPreMultiplication() ? 1 : 0);
    if (shown && shown->mayRepeat()) wrapTexture(textureMatrix(), masterTextureCoordinates());
}

SourceColors QVMeshObject3D::colors() const {
    const auto* flat = dynamic_cast<const QVSignColorMaterial*>(material());
    const QVTextureMaterial* shown = textureMaterial();
    const bool isOpaque = flat ? flat->a() >= 1 : shown && shown->pictureAlpha().isOpaque;
    return isOpaque ? SourceColors::Opaque : SourceColors::Straight;
}

/// A convex shape is in order when what faces away is drawn first. Where the near hides the far and depths
/// are compared, what faces the viewer goes first: the rest is then never shaded.
void QVMeshObject3D::drawFaces(Shader& shader) const {
    FrameEdges::shared().requireMultisampling();
    const bool hides = GLState::hides(colors());
    if (hides) GLState::announceColors(SourceColors::Opaque);
    const bool isNearFirst = hides && GLState::comparesDepths();
    glEnable(GL_CULL_FACE);
    for (const bool isNear : {isNearFirst, !isNearFirst}) drawSide(shader, isNear);
    glDisable(GL_CULL_FACE);
    if (hides) GLState::announceColors(SourceColors::Straight);
}

/// The faces that are seen from outside, or those that are seen from within.
void QVMeshObject3D::drawSide(Shader& shader, bool isOutside) const {
    const unsigned int position = shader.attributeHandle("position");
    const unsigned int coordinates = shader.attributeHandle("inputTextureCoordinate");
    const unsigned int normal = shader.attributeHandle("normal");
    glCullFace(isOutside ? GL_BACK : GL_FRONT);
    for (const MeshFace& face : faces_) {
        const glm::vec3 towardsViewer = isOutside ? face.normal : -face.normal;
        if (normal != 0) glVertexAttrib3fv(normal, &towardsViewer[0]);
        drawQuadFan(position, coordinates, {face.corners.data(), masterTextureCoordinates()});
    }
}

}  // namespace multiscene
