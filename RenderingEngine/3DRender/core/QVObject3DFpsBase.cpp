#include "core/QVObject3DFpsBase.h"

#include <algorithm>
#include <array>
#include <utility>

#include "core/QVKeyAnimationOperators.h"
#include "core/QVScene3D.h"
#include "core/SkippedMedia.h"
#include "opengl2.0/Shader.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "painter/Painter.h"
#include "platform/base/Limits.h"
#include "playback/RenderDriver.h"

namespace multiscene {

namespace {

constexpr std::array<std::pair<std::string_view, uint32_t>, 11> blendFactors{{
    {"ZERO", 0},
    {"ONE", 1},
    {"SRC_COLOR", 0x0300},
    {"ONE_MINUS_SRC_COLOR", 0x0301},
    {"SRC_ALPHA", 0x0302},
    {"ONE_MINUS_SRC_ALPHA", 0x0303},
    {"DST_ALPHA", 0x0304},
    {"ONE_MINUS_DST_ALPHA", 0x0305},
    {"DST_COLOR", 0x0306},
    {"ONE_MINUS_DST_COLOR", 0x0307},
    {"SRC_ALPHA_SATURATE", 0x0308},
}};

constexpr auto blendNames = [] {
    std::array<std::string_view, blendFactors.size()> names;
    std::transform(blendFactors.begin(), blendFactors.end(), names.begin(),
                   [](const auto& factor) { return factor.first; });
    return names;
}();

/// The file and the compiler's words on one line.
std::string shaderProblem(const Shader& shader, const std::string& description) {
    if (shader.failures().empty()) return description;
    const ShaderFailure& failure = shader.failures().front();
    std::string text = (failure.file.empty() ? description : failure.file) + ": " + failure.message;
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

constexpr int maxTargetSize = platform::limitOf<int>("maxTargetSide");

constexpr Key fpsInfoKeyList[] = {
    {.name = "startFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "first frame",
     .lookup = KeyLookup::UserMap,
     .minimum = 0},
    {.name = "endFps",
     .type = KeyType::Integer,
     .unit = "frames",
     .meaning = "last frame, inclusive; none: no end",
     .lookup = KeyLookup::UserMap,
     .minimum = 0},
    {.name = "RenderDepth",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "larger is further back and drawn first"},
    {.name = "isLightEnable", .type = KeyType::Bool, .fallback = "0", .meaning = "lit by the lights"},
    {.name = "isEnableDephTest",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "depth test while the node draws, and until its first child has been drawn; give every child "
                "that needs one its own"},
    {.name = "isChangeBlend", .type = KeyType::Bool, .fallback = "0", .meaning = "use srcBlend and dstBlend"},
    {.name = "srcBlend",
     .type = KeyType::Choice,
     .meaning = "blend factor of what is drawn",
     .choices = blendNames,
     .onlyWith = "isChangeBlend"},
    {.name = "dstBlend",
     .type = KeyType::Choice,
     .meaning = "blend factor of what is there",
     .choices = blendNames,
     .onlyWith = "isChangeBlend"},
    {.name = "customShaderPath",
     .type = KeyType::Text,
     .meaning = "shader description of the template",
     .lookup = KeyLookup::Path},
    {.name = "isRenderToTexture",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "draw the node and its children into a texture instead of the picture"},
    {.name = "textureSize",
     .type = KeyType::Vector2,
     .unit = "pixels",
     .meaning = "size of that texture",
     .minimum = 1,
     .maximum = maxTargetSize,
     .onlyWith = "isRenderToTexture"},
    {.name = "textureMapKey",
     .type = KeyType::Text,
     .meaning = "name under which \"RTTTexture\" finds it",
     .onlyWith = "isRenderToTexture"},
};
constexpr KeyTable fpsInfoKeys{"FpsInfo", "When a node exists and how it is drawn.", nullptr, fpsInfoKeyList};

}  // namespace

static constexpr Key fpsBaseKeyList[] = {
    {.name = "FpsInfo",
     .type = KeyType::Dictionary,
     .meaning = "frame range, depth and how the node is drawn; none: always there",
     .children = &fpsInfoKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "key frames of the node's own values",
     .children = &animationKeys},
};
const KeyTable fpsBaseKeys{"QVObject3DFpsBase", "Frame range, depth, how the node is drawn, and key frames.",
                           &containerKeys, fpsBaseKeyList};

uint32_t QVObject3DFpsBase::blendParmeWithString(std::string_view name) {
    for (const auto& [known, factor] : blendFactors)
        if (known == name) return factor;
    return 0;
}

void QVObject3DFpsBase::rendInfoWithDic(const platform::Value& info) {
    QVObjectContainer3D::rendInfoWithDic(info);
    const KeyReader reader(fpsBaseKeys, info);
    animationWithInfo(reader.array("AnimationInfo"));
    if (reader.has("FpsInfo")) readFrameRange(reader.value("FpsInfo"));
}

void QVObject3DFpsBase::readFrameRange(const platform::Value& fpsInfo) {
    settings().computeStartAndEndFps(fpsInfo, sceneIdentifier(), sartFps_, endFps_);
    const KeyReader reader(fpsInfoKeys, fpsInfo);
    setRenderDepth(reader.number("RenderDepth"));
    setIsLightEnable(reader.boolean("isLightEnable"));
    isEnableDephTest_ = reader.boolean("isEnableDephTest");
    readBlend(reader);
    readCustomShader(reader);
    readRenderToTexture(reader);
}

void QVObject3DFpsBase::readBlend(const KeyReader& fpsInfo) {
    isChangeBlend_ = fpsInfo.boolean("isChangeBlend");
    if (!isChangeBlend_) return;
    srcBlend_ = blendParmeWithString(fpsInfo.text("srcBlend"));
    dstBlend_ = blendParmeWithString(fpsInfo.text("dstBlend"));
}

void QVObject3DFpsBase::readCustomShader(const KeyReader& fpsInfo) {
    const platform::Value path = fpsInfo.value("customShaderPath");
    if (!path.isString()) return;
    const std::string resolved = resolvedPath(path.stringValue());
    const auto owner = scene();
    if (!owner) return;
    customShader_ = owner->renderManager().painter().shader(resolved);
    if (customShader_->programHandle() == 0)
        reportSkipped(*this, "shader failed", shaderProblem(*customShader_, resolved));
}

std::optional<glm::ivec2> QVObject3DFpsBase::targetSizeOf(const platform::Value& fpsInfo) {
    return targetSizeOf(KeyReader(fpsInfoKeys, fpsInfo));
}

std::optional<glm::ivec2> QVObject3DFpsBase::targetSizeOf(const KeyReader& fpsInfo) {
    if (!fpsInfo.boolean("isRenderToTexture")) return std::nullopt;
    constexpr auto most = static_cast<float>(maxTargetSize);
    const auto side = [=](float length) {
        return length >= 1 ? static_cast<int>(std::min(length, most)) : 1;
    };
    const glm::vec2 size = fpsInfo.vector2("textureSize");
    return glm::ivec2(side(size.x), side(size.y));
}

void QVObject3DFpsBase::readRenderToTexture(const KeyReader& fpsInfo) {
    const auto size = targetSizeOf(fpsInfo);
    isRenderToTexture_ = size.has_value();
    if (!size) return;
    frameBufferToTexture_ = std::make_shared<QVFrameBufferToTexture>(size->x, size->y);
    if (const auto owner = scene())
        owner->setRenderToTexture(fpsInfo.text("textureMapKey"), frameBufferToTexture_);
}

void QVObject3DFpsBase::updateDue(const Tick& tick) {
    QVObjectContainer3D::updateDue(tick);
    updateKeyFrames(tick.frame);
}

void QVObject3DFpsBase::renderTargets(Painter& painter, const Tick& tick) {
    if (isRenderToTexture_)
        renderSelfAndChildrens(painter, tick);
    else
        QVObjectContainer3D::renderTargets(painter, tick);
}

void QVObject3DFpsBase::renderingBeforeConfig(Painter& painter, const Tick&) {
    if (isRenderToTexture_) painter.beginTarget(*frameBufferToTexture_);
    if (isEnableDephTest_) painter.setDepthTest(true);
    if (isChangeBlend_) painter.setBlendFunction({srcBlend_, dstBlend_});
}

void QVObject3DFpsBase::renderingAfterConfig(Painter& painter, const Tick&) {
    if (isRenderToTexture_) painter.endTarget();
    painter.resetState();
}

void QVObject3DFpsBase::completeDue(const Tick& tick) {
    QVObjectContainer3D::completeDue(tick);
    if (tick.frame == endFps_) setIsRenderFinishNeedRemove(true);
}

std::string QVObject3DFpsBase::sceneIdentifier() const {
    const auto owner = scene();
    return owner ? owner->sceneIdentifier() : std::string();
}

std::string QVObject3DFpsBase::sceneResourceFolderPath() const {
    const auto owner = scene();
    return owner ? owner->sceneConfigData().sceneResourceFolderPath : std::string();
}

std::string QVObject3DFpsBase::resolvedPath(const std::string& path) const {
    return settings().multiSceneRenderPathResourcesWithString(path, sceneResourceFolderPath());
}

void QVObject3DFpsBase::addTraceFields(platform::Value::Dictionary& fields) {
    QVObjectContainer3D::addTraceFields(fields);
    fields["sartFps"] = platform::Value(sartFps_);
    fields["endFps"] = platform::Value(endFps_);
}

}  // namespace multiscene
