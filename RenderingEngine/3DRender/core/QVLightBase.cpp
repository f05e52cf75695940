#include "core/QVLightBase.h"

#include <algorithm>

#include "core/QVDirectionalLight.h"
#include "core/QVPointLight.h"
#include "core/QVSpotLight.h"
#include "painter/LightUniforms.h"

namespace multiscene {

static constexpr Key lightAnimationKeyList[] = {
    {.name = "startLightSourcePosition", .type = KeyType::Vector3, .meaning = "position at the start"},
    {.name = "endLightSourcePosition", .type = KeyType::Vector3, .meaning = "position at the end"},
    {.name = "positionEase", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
    {.name = "startLightSourceColor", .type = KeyType::Vector3, .meaning = "colour at the start"},
    {.name = "endLightSourceColor", .type = KeyType::Vector3, .meaning = "colour at the end"},
    {.name = "colorEase", .type = KeyType::Integer, .fallback = "0", .meaning = "ease id"},
};
constexpr KeyTable lightAnimationKeys{"AnimationInfo of a light",
                                      "A channel moves when both its ends are given.", &animationKeys,
                                      lightAnimationKeyList};

static constexpr Key lightKeyList[] = {
    {.name = "lightSourceType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "1 point, 2 directional, 3 spot",
     .required = true},
    {.name = "lightSourceColor",
     .type = KeyType::Vector3,
     .fallback = "1,1,1",
     .meaning = "colour; animated, but the material colours are what lights"},
    {.name = "lightSourcePosition",
     .type = KeyType::Vector3,
     .unit = "model units",
     .fallback = "0,0,1",
     .meaning = "position; direction of a directional light"},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "moves of position and colour",
     .children = &lightAnimationKeys},
};

namespace {

template <typename Light>
std::shared_ptr<QVLightBase> make() {
    return std::make_shared<Light>();
}

constexpr KeyTable pointLightKeys{"Point light", "\"lightSourceType\" 1: shines from its place."};
constexpr KeyTable directionalLightKeys{"Directional light",
                                        "\"lightSourceType\" 2: shines from one direction, as the sun."};

struct LightType {
    std::string_view name;  ///< its "lightSourceType"
    const KeyTable* keys;
    std::shared_ptr<QVLightBase> (*make)();
};
constexpr LightType lightTypes[] = {{"1", &pointLightKeys, make<QVPointLight>},
                                    {"2", &directionalLightKeys, make<QVDirectionalLight>},
                                    {"3", &spotLightKeys, make<QVSpotLight>}};
constexpr KeyVariants lightVariants = variantsOfList<lightTypes>("light", "lightSourceType");

}  // namespace

constexpr KeyTable lightKeys{"LightSourceArray", "A light of a scene or of a node.", &lightMaterialKeys,
                             lightKeyList, &lightVariants};

QVLightBase::Lights QVLightBase::lightSourceArrayWithInfo(const platform::Value& info) {
    Lights lights;
    for (const platform::Value& entry : info.array())
        if (auto light = lightSourceWithDic(entry)) lights.push_back(std::move(light));
    return lights;
}

std::shared_ptr<QVLightBase> QVLightBase::lightSourceWithDic(const platform::Value& info) {
    const std::string name = std::to_string(KeyReader(lightKeys, info).integer("lightSourceType"));
    const auto type = std::ranges::find(lightTypes, name, &LightType::name);
    if (type == std::end(lightTypes)) return nullptr;
    const auto light = type->make();
    light->lightInfoWithDic(info);
    return light;
}

void QVLightBase::lightInfoWithDic(const platform::Value& info) {
    const KeyReader reader(lightKeys, info);
    lightSourceType_ = static_cast<LightKind>(reader.int32("lightSourceType"));
    lightSourceColor_ = reader.vector3("lightSourceColor");
    lightSourcePosition_ = reader.vector3("lightSourcePosition");
    keyAnimation_ = {reader.array("AnimationInfo"), keyMovesOf};
    material_ = LightMaterial::materialWithDic(info);
}

QVLightBase::KeyMoves QVLightBase::keyMovesOf(const platform::Value& key) {
    const KeyReader reader(lightAnimationKeys, key);
    const auto move = [&](const char* startKey, const char* endKey, const char* easeKey) {
        std::optional<Move<glm::vec3>> read;
        if (reader.has(startKey) && reader.has(endKey))
            read = {reader.vector3(startKey), reader.vector3(endKey), reader.int32(easeKey)};
        return read;
    };
    return {.position = move("startLightSourcePosition", "endLightSourcePosition", "positionEase"),
            .color = move("startLightSourceColor", "endLightSourceColor", "colorEase")};
}

void QVLightBase::updateData(int64_t frame) {
    keyAnimation_.updateData(frame, nullptr, [this](const KeyMoves& moves, const KeyProgress& progress) {
        if (moves.position) lightSourcePosition_ = moves.position->easedAt(progress.linear, nullptr);
        if (moves.color) lightSourceColor_ = moves.color->easedAt(progress.linear, nullptr);
    });
}

std::vector<Light> QVLightBase::lightsWithLightArray(const Lights& lights, bool isLightEnable) {
    std::vector<Light> shining;
    if (!isLightEnable) return shining;
    for (const auto& light : lights) shining.push_back(light->light());
    return shining;
}

void QVLightBase::glslLightParamWithLightArray(const Lights& lights, Uniforms& uniforms, bool isLightEnable) {
    addLightUniforms(lightsWithLightArray(lights, isLightEnable), uniforms);
}

Light QVLightBase::light() const {
    return {.kind = lightSourceType_,
            .position = lightSourcePosition_,
            .ambient = material_.ambientMaterialColor,
            .diffuse = material_.diffuseMaterialColor,
            .specular = material_.specularMaterialColor,
            .shininess = material_.specularShininess};
}

}  // namespace multiscene
