#include "animation/TransformItemKeys.h"

namespace multiscene {

static constexpr Key transformItemKeyList[] = {
    {.name = "sartFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "first frame",
     .minimum = 0},
    {.name = "endFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "frame on which the item is left; its end value is not applied",
     .minimum = 0},
    {.name = "startTranslate",
     .type = KeyType::Vector3,
     .unit = "model units",
     .meaning = "position at the start; none: where the node is"},
    {.name = "endTranslate",
     .type = KeyType::Vector3,
     .unit = "model units",
     .meaning = "position at the end; animates. 30000 or more names a path for that axis"},
    {.name = "translateEase", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
    {.name = "startScale", .type = KeyType::Vector3, .meaning = "scale at the start; none: as it is"},
    {.name = "endScale", .type = KeyType::Vector3, .meaning = "scale at the end; animates"},
    {.name = "scaleEase", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
    {.name = "startRotate",
     .type = KeyType::Vector3,
     .unit = "degrees",
     .meaning = "rotation at the start; without endRotate it is taken as radians"},
    {.name = "endRotate",
     .type = KeyType::Vector3,
     .unit = "degrees",
     .meaning = "rotation at the end; animates"},
    {.name = "rotateEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "ease id of the rotation and of the texture"},
    {.name = "startTextureOrigin",
     .type = KeyType::Vector2,
     .unit = "texture units",
     .meaning = "texture origin at the start"},
    {.name = "endTextureOrigin",
     .type = KeyType::Vector2,
     .unit = "texture units",
     .meaning = "texture origin at the end; animates the texture"},
    {.name = "startTextureSize",
     .type = KeyType::Vector2,
     .unit = "texture units",
     .meaning = "part of the texture shown at the start"},
    {.name = "endTextureSize",
     .type = KeyType::Vector2,
     .unit = "texture units",
     .meaning = "part of the texture shown at the end"},
    {.name = "textureEase",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "read but not used: the texture follows rotateEase"},
};
const KeyTable transformItemKeys{"TransformArray", "One motion of a sequence.", nullptr,
                                 transformItemKeyList};

static constexpr Key mutableTranslateKeyList[] = {
    {.name = "startTranslate",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "offset at the start"},
    {.name = "endTranslate",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,0",
     .meaning = "offset at the end; 30000 or more names a path for that axis"},
    {.name = "iTranslate", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
};
const KeyTable mutableTranslateKeys{"Translation", "\"transformType\" 0.", nullptr, mutableTranslateKeyList};

static constexpr Key mutableScaleKeyList[] = {
    {.name = "startScale", .type = KeyType::Vector3, .fallback = "0,0,0", .meaning = "scale at the start"},
    {.name = "endScale", .type = KeyType::Vector3, .fallback = "0,0,0", .meaning = "scale at the end"},
    {.name = "iScale", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
};
const KeyTable mutableScaleKeys{"Scaling", "\"transformType\" 1.", nullptr, mutableScaleKeyList};

static constexpr Key mutableRotateKeyList[] = {
    {.name = "startRotate",
     .type = KeyType::Vector3,
     .unit = "degrees",
     .fallback = "0,0,0",
     .meaning = "rotation at the start"},
    {.name = "endRotate",
     .type = KeyType::Vector3,
     .unit = "degrees",
     .fallback = "0,0,0",
     .meaning = "rotation at the end"},
    {.name = "iRotate", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
};
const KeyTable mutableRotateKeys{"Rotation", "\"transformType\" 2.", nullptr, mutableRotateKeyList};

namespace {

struct MutableKind {
    std::string_view name;  ///< its "transformType"
    const KeyTable* keys;
};
constexpr MutableKind mutableKinds[] = {
    {"0", &mutableTranslateKeys}, {"1", &mutableScaleKeys}, {"2", &mutableRotateKeys}};
constexpr KeyVariants mutableVariants = variantsOfList<mutableKinds>("motion", "transformType");

}  // namespace

static constexpr Key mutableItemKeyList[] = {
    {.name = "transformType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "0 translate, 1 scale, 2 rotate",
     .required = true},
    {.name = "fpsStart",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "first frame",
     .minimum = 0},
    {.name = "fpsEnd",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "last frame, inclusive; the item has no effect outside",
     .minimum = 0},
};
const KeyTable mutableItemKeys{"MutableTransformArray", "One motion that overlaps others.", nullptr,
                               mutableItemKeyList, &mutableVariants};

}  // namespace multiscene
