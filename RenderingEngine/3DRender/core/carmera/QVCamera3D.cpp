#include "core/carmera/QVCamera3D.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "core/QVScene3D.h"
#include "format/Angles.h"

namespace multiscene {

namespace {

constexpr float defaultFov = 75;  // degrees

constexpr Key lookAtKeyList[] = {
    {.name = "isMoveTargetPoint", .type = KeyType::Bool, .fallback = "0", .meaning = "turn to a point"},
    {.name = "moveTargetPointEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "ease id",
     .onlyWith = "isMoveTargetPoint"},
    {.name = "startTargetPoint",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "point to look at, at the start",
     .onlyWith = "isMoveTargetPoint"},
    {.name = "endTargetPoint",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "point to look at, at the end",
     .onlyWith = "isMoveTargetPoint"},
    {.name = "isMoveCameraPosition", .type = KeyType::Bool, .fallback = "0", .meaning = "move the eye"},
    {.name = "moveCameraPositionEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "ease id",
     .onlyWith = "isMoveCameraPosition"},
    {.name = "startMoveCameraPosition",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "eye at the start",
     .onlyWith = "isMoveCameraPosition"},
    {.name = "endMoveCameraPosition",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "eye at the end",
     .onlyWith = "isMoveCameraPosition"},
    {.name = "isRotateFromUpVector", .type = KeyType::Bool, .fallback = "0", .meaning = "pan"},
    {.name = "rotateFromUpVectorEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "ease id",
     .onlyWith = "isRotateFromUpVector"},
    {.name = "startRotateFromUpVector",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "angle about the up vector at the start",
     .onlyWith = "isRotateFromUpVector"},
    {.name = "endRotateFromUpVector",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "angle at the end",
     .onlyWith = "isRotateFromUpVector"},
    {.name = "isRotateFromTargetVector", .type = KeyType::Bool, .fallback = "0", .meaning = "roll"},
    {.name = "rotateFromTargetVectorEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "ease id",
     .onlyWith = "isRotateFromTargetVector"},
    {.name = "startRotateFromTargetVector",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "angle about the forward vector at the start",
     .onlyWith = "isRotateFromTargetVector"},
    {.name = "endRotateFromTargetVector",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "angle at the end",
     .onlyWith = "isRotateFromTargetVector"},
    {.name = "isRotateFromRightVector", .type = KeyType::Bool, .fallback = "0", .meaning = "tilt"},
    {.name = "rotateFromRightVectorEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "ease id",
     .onlyWith = "isRotateFromRightVector"},
    {.name = "startRotateFromRightVector",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "angle about the x axis at the start",
     .onlyWith = "isRotateFromRightVector"},
    {.name = "endRotateFromRightVector",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "0",
     .meaning = "angle at the end",
     .onlyWith = "isRotateFromRightVector"},
};
}  // namespace

constexpr KeyTable lookAtKeys{"LookAtAnimation",
                              "One move of the camera; channels are applied in this order.", &animationKeys,
                              lookAtKeyList};

namespace {

using Camera = std::shared_ptr<QVCamera3D>;

constexpr Key orthCameraKeyList[] = {
    {.name = "OrthWidth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "how many units the picture is wide; without it nothing is seen"},
};
constexpr KeyTable orthCameraKeys{"QVOrthCamera", "Things keep their size, however far they are.", nullptr,
                                  orthCameraKeyList};

Camera orthCamera(const platform::Value& info, float aspect) {
    return QVCamera3D::initOrthWithWidth(KeyReader(orthCameraKeys, info).number("OrthWidth"), aspect);
}

constexpr Key frustumCameraKeyList[] = {
    {.name = "FrustumFov",
     .type = KeyType::Number,
     .unit = "degrees",
     .fallback = "75",
     .meaning = "horizontal field of view",
     .minimum = 1,
     .maximum = 179},
};
constexpr KeyTable frustumCameraKeys{"QVFrustumCamera", "Things get smaller the further they are.", nullptr,
                                     frustumCameraKeyList};

Camera frustumCamera(const platform::Value& info, float aspect) {
    const float fov = KeyReader(frustumCameraKeys, info).number("FrustumFov");
    return QVCamera3D::initWithFov(fov > 0 ? fov : defaultFov, aspect);
}

struct CameraType {
    std::string_view name;
    const KeyTable* keys;
    Camera (*make)(const platform::Value& info, float aspect);
};
constexpr CameraType cameraTypes[] = {{"QVOrthCamera", &orthCameraKeys, orthCamera},
                                      {"QVFrustumCamera", &frustumCameraKeys, frustumCamera}};
constexpr KeyVariants cameraVariants = variantsOfList<cameraTypes>("camera", "type");

constexpr Key cameraKeyList[] = {
    {.name = "type", .type = KeyType::Choice, .meaning = "projection", .required = true},
    {.name = "aspect",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "width / height; none: the picture's",
     .minimum = 0},
    {.name = "LookAtAnimation", .type = KeyType::Array, .meaning = "camera moves", .children = &lookAtKeys},
};

}  // namespace

constexpr KeyTable cameraKeys{"Camera", "The camera of a scene or of a node.", &transformKeys, cameraKeyList,
                              &cameraVariants};

std::shared_ptr<QVCamera3D> QVCamera3D::cameraWithInfo(const platform::Value& info,
                                                       const std::shared_ptr<QVScene3D>& scene) {
    const KeyReader reader(cameraKeys, info);
    const auto type = std::ranges::find(cameraTypes, reader.text("type"), &CameraType::name);
    if (type == std::end(cameraTypes)) return nullptr;
    float aspect = reader.number("aspect");
    if (!(aspect > 0) && scene) aspect = scene->aspect();
    const Camera camera = type->make(info, aspect);
    camera->setScene(scene);
    camera->rendInfoWithDic(info);
    return camera;
}

std::shared_ptr<QVCamera3D> QVCamera3D::initWithFov(float degrees, float aspect) {
    auto camera = std::make_shared<QVCamera3D>();
    camera->setFov(degrees);
    camera->setAspect(aspect);
    return camera;
}

std::shared_ptr<QVCamera3D> QVCamera3D::initOrthWithWidth(float width, float aspect) {
    auto camera = std::make_shared<QVCamera3D>();
    camera->isPerspectiveCamera3D_ = false;
    camera->setOrthWidth(width);
    camera->setOrthAspect(aspect);
    return camera;
}

void QVCamera3D::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTransformBase::rendInfoWithDic(info);
    lookAtAnimation_ = {KeyReader(cameraKeys, info).array("LookAtAnimation"), lookAtMovesOf};
}

// Projection

void QVCamera3D::setProjection(float& field, float value) {
    field = value;
    invalidatePPTransform();
}

void QVCamera3D::setFov(float degrees) { setProjection(fov_, toRadians(degrees)); }
void QVCamera3D::setNear(float near) { setProjection(near_, near); }
void QVCamera3D::setFar(float far) { setProjection(far_, far); }
void QVCamera3D::setAspect(float aspect) { setProjection(aspect_, aspect); }
void QVCamera3D::setOrthWidth(float width) { setProjection(OrthWidth_, width); }
void QVCamera3D::setOrthAspect(float aspect) { setProjection(OrthAspect_, aspect); }
void QVCamera3D::setOrthNear(float near) { setProjection(OrthNear_, near); }
void QVCamera3D::setOrthFar(float far) { setProjection(OrthFar_, far); }

void QVCamera3D::setPpCenter(const glm::vec2& center) {
    ppCenter_ = center;
    invalidatePPTransform();
}

const glm::mat4& QVCamera3D::getPpTransform() {
    updatePPTransform();
    return ppTransform_;
}

void QVCamera3D::updatePPTransform() {
    if (!isPPTransformDirty_) return;
    ppTransform_ = isPerspectiveCamera3D_ ? perspective() : orthographic();
    isPPTransformDirty_ = false;
    ++version_;
}

glm::mat4 QVCamera3D::perspective() const {
    const float width = near_ * std::tan(fov_ / 2), height = width / aspect_;
    glm::mat4 matrix(0);
    matrix[0][0] = 2 * near_ / (2 * width);
    matrix[1][1] = 2 * near_ / (2 * height);
    matrix[2][2] = -(far_ + near_) / (far_ - near_);
    matrix[2][3] = -1;
    matrix[3][2] = -2 * far_ * near_ / (far_ - near_);
    return matrix;
}

glm::mat4 QVCamera3D::orthographic() const {
    const double top = OrthWidth_ / (2.0 * OrthAspect_), bottom = -top;
    glm::mat4 matrix(0);
    matrix[0][0] = 2 / OrthWidth_;
    matrix[1][1] = static_cast<float>(2 / (top - bottom));
    matrix[2][2] = -2 / (OrthFar_ - OrthNear_);
    matrix[3][2] = -(OrthFar_ + OrthNear_) / (OrthFar_ - OrthNear_);
    matrix[3][3] = 1;
    return matrix;
}

// Frame

void QVCamera3D::updateDue(const Tick& tick) {
    const auto play = [this](const std::vector<LookAtMove>& moves, const KeyProgress& progress) {
        for (const LookAtMove& each : moves) each.apply(lookAt_, each.move.easedAt(progress.linear, nullptr));
    };
    lookAtAnimation_.updateData(tick.frame, nullptr, play);
}

void QVCamera3D::updateMatrix() {
    updateTransform();
    updateSceneTransform();
    updatePPTransform();
    if (lookAt_.computeCameraLookAtTransform()) ++version_;
}

namespace {

/// One channel of a camera move: its keys and what its value does.
struct LookAtChannel {
    const char *isActive, *ease, *start, *end;
    void (*apply)(QVCamera3DLookAtTransform&, const glm::vec3& value);
};

/// Angles are plain numbers, which read as the first component.
constexpr std::array<LookAtChannel, 5> lookAtChannels{{
    {"isMoveTargetPoint", "moveTargetPointEase", "startTargetPoint", "endTargetPoint",
     [](QVCamera3DLookAtTransform& view, const glm::vec3& value) {
         view.cameraLookAtWithTargetPoint(value);
     }},
    {"isMoveCameraPosition", "moveCameraPositionEase", "startMoveCameraPosition", "endMoveCameraPosition",
     [](QVCamera3DLookAtTransform& view, const glm::vec3& value) { view.moveCameraToTarget(value); }},
    {"isRotateFromUpVector", "rotateFromUpVectorEase", "startRotateFromUpVector", "endRotateFromUpVector",
     [](QVCamera3DLookAtTransform& view, const glm::vec3& value) { view.cameraRotateFromUpVector(value.x); }},
    {"isRotateFromTargetVector", "rotateFromTargetVectorEase", "startRotateFromTargetVector",
     "endRotateFromTargetVector",
     [](QVCamera3DLookAtTransform& view, const glm::vec3& value) {
         view.cameraRotateFromTargetVector(value.x);
     }},
    {"isRotateFromRightVector", "rotateFromRightVectorEase", "startRotateFromRightVector",
     "endRotateFromRightVector",
     [](QVCamera3DLookAtTransform& view, const glm::vec3& value) {
         view.cameraRotateFromRightVector(value.x);
     }},
}};

}  // namespace

std::vector<QVCamera3D::LookAtMove> QVCamera3D::lookAtMovesOf(const platform::Value& key) {
    const KeyReader reader(lookAtKeys, key);
    std::vector<LookAtMove> moves;
    for (const LookAtChannel& channel : lookAtChannels)
        if (reader.boolean(channel.isActive))
            moves.push_back(
                {channel.apply,
                 {reader.vector3(channel.start), reader.vector3(channel.end), reader.int32(channel.ease)}});
    return moves;
}

}  // namespace multiscene
