#include "3DObject/QuadObject3D/QVQuadFrameObject3D.h"

#include <algorithm>
#include <cmath>

#include "core/Material/QVTextureMaterial.h"
#include "core/SkippedMedia.h"
#include "format/NodeTypes.h"
#include "platform/base/Paths.h"
#include "platform/base/Saturating.h"
#include "platform/image/ColorTable.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr std::string_view frameTypes[] = {"image", "filter", "color"};
/// In the order of the numbers that the shader knows.
static constexpr std::string_view simpleFilters[] = {"none", "grey", "sepia", "negative", "mosaic", "wave"};

static constexpr Key frameInfoKeyList[] = {
    {.name = "frameType",
     .type = KeyType::Choice,
     .fallback = "image",
     .meaning = "the picture, the picture filtered and within a border, or one colour",
     .choices = frameTypes},
    {.name = "frameColor",
     .type = KeyType::Color,
     .fallback = "0,0,0,1",
     .meaning = "color: the colour; filter: that of the border"},
    {.name = "filterType",
     .type = KeyType::Choice,
     .fallback = "none",
     .meaning = "filter: what is done to the picture",
     .choices = simpleFilters},
    {.name = "filterRange",
     .type = KeyType::Number,
     .fallback = "1",
     .meaning = "filter: how much of the filter shows",
     .minimum = 0,
     .maximum = 1},
    {.name = "pixelSize",
     .type = KeyType::Number,
     .unit = "pixels",
     .fallback = "16",
     .meaning = "mosaic: side of a tile, in pixels of the picture",
     .minimum = 1},
    {.name = "frameWidth",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "filter: width of the border, as a part of the frame's shorter side",
     .minimum = 0,
     .maximum = 0.5},
    {.name = "pictureColor",
     .type = KeyType::Color,
     .fallback = "1,1,1,1",
     .meaning = "filter: multiplies the picture's colours"},
    {.name = "isReflection",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "filter: the lower half mirrors the upper one"},
    {.name = "cornerRadius",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "radius of the corners, as a part of the frame's shorter side",
     .minimum = 0,
     .maximum = 0.5},
    {.name = "filters",
     .type = KeyType::Array,
     .meaning = "image, filter: what is done to the picture first, the first one first, at most 8",
     .children = &filterKeys},
};
constexpr KeyTable frameInfoKeys{"FrameInfo", "How a frame quad shows its picture.", nullptr,
                                 frameInfoKeyList};

static constexpr Key quadFrameKeyList[] = {
    {.name = "FrameInfo",
     .type = KeyType::Dictionary,
     .meaning = "what the frame shows; none: its picture",
     .children = &frameInfoKeys},
};
constexpr KeyTable quadFrameKeys{"QVQuadFrameObject3D",
                                 "A picture with a filter and a border, or one colour.", &diaphaneityKeys,
                                 quadFrameKeyList};

QV_REGISTER_NODE_TYPE(QVQuadFrameObject3D, quadFrameKeys);

namespace {

/// The place of a name in a list; the first for a name that is not there.
template <size_t count>
int placeIn(const std::string_view (&names)[count], const std::string& name) {
    const auto found = std::ranges::find(names, name);
    return found == std::end(names) ? 0 : static_cast<int>(found - std::begin(names));
}

constexpr float endlessFrames = 100;

}  // namespace

void QVQuadFrameObject3D::rendInfoWithDic(const platform::Value& info) {
    QVQuadDiaphaneityObject3D::rendInfoWithDic(info);
    const KeyReader reader(frameInfoKeys, KeyReader(quadFrameKeys, info).value("FrameInfo"));
    frameType_ = static_cast<FrameType>(placeIn(frameTypes, reader.text("frameType")));
    frameColor_ = reader.vector4("frameColor");
    filter_ = {.type = placeIn(simpleFilters, reader.text("filterType")),
               .range = reader.number("filterRange"),
               .pixelSize = reader.number("pixelSize"),
               .borderWidth = reader.number("frameWidth"),
               .pictureColor = reader.vector4("pictureColor"),
               .borderColor = frameColor_,
               .isReflection = reader.boolean("isReflection")};
    cornerRadius_ = std::clamp(reader.number("cornerRadius"), 0.0f, 0.5f);
    filters_.read(reader.array("filters"), [this](const KeyReader& filter) { return colorTable(filter); });
}

/// The template's table, or else one of the program's own.
FilterList::Table QVQuadFrameObject3D::colorTable(const KeyReader& filter) {
    const std::string own = filter.text("table");
    try {
        if (!own.empty()) return tableOfTemplate(own);
        const auto file = platform::resourcesFolder() / "filmLooks" / (filter.text("look") + ".cube");
        return std::make_shared<platform::ColorTable>(platform::ColorTable::read(file));
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        reportSkipped(*this, "film look: " + error.message(), own.empty() ? filter.text("look") : own);
        return nullptr;
    }
}

FilterList::Table QVQuadFrameObject3D::tableOfTemplate(const std::string& name) {
    const std::string path = resolvedPath(name);
    Playback* const played = playback();
    const platform::FileHandle file =
        path.empty() || !played ? platform::FileHandle() : played->gate().open(path).file;
    if (!file) throw platform::Error(platform::ErrorKind::Template, "there is no such file");
    return std::make_shared<platform::ColorTable>(platform::ColorTable::read(file, name));
}

void QVQuadFrameObject3D::updateKeyFrames(int64_t frame) {
    QVQuadDiaphaneityObject3D::updateKeyFrames(frame);
    filters_.updateKeyFrames(frame, *this);
}

void QVQuadFrameObject3D::addTraceValues(platform::Value::Dictionary& values) const {
    QVQuadDiaphaneityObject3D::addTraceValues(values);
    filters_.addTraceValues(values);
}

std::shared_ptr<const FilterChain> QVQuadFrameObject3D::filters() const {
    return frameType_ == FrameType::Color ? nullptr : filters_.chain(pictureSize());
}

void QVQuadFrameObject3D::updateDue(const Tick& tick) {
    QVQuadDiaphaneityObject3D::updateDue(tick);
    filter_.time = normalTime(tick.frame);
}

float QVQuadFrameObject3D::normalTime(int64_t frame) const {
    const auto shown = static_cast<float>(platform::saturatingDifference(frame, sartFps()));
    if (endFps() == INT64_MAX) return std::fmod(shown / endlessFrames, 1.0f);
    return endFps() > sartFps()
               ? shown / static_cast<float>(platform::saturatingDifference(endFps(), sartFps()))
               : 0;
}

glm::vec2 QVQuadFrameObject3D::pictureSize() const {
    const TextureSize size = textureMaterial() ? textureMaterial()->textureSize() : TextureSize{};
    if (size.width > 0 && size.height > 0) return {size.width, size.height};
    return glm::max(glm::abs(glm::vec2(modelWidth(), modelHeight())), glm::vec2(1e-6f));
}

Look QVQuadFrameObject3D::look() const {
    const bool isRound = cornerRadius_ > 0;
    if (frameType_ == FrameType::Color && !isRound)
        return ColorLook{.color = frameColor_, .opacity = renderAlpha()};
    if (frameType_ == FrameType::Image && !isRound) return QVQuadDiaphaneityObject3D::look();
    FilterLook filter = frameType_ == FrameType::Filter ? filter_ : FilterLook();
    if (frameType_ == FrameType::Color) {
        filter.borderWidth = FilterLook::borderAlone;
        filter.borderColor = frameColor_;
    }
    filter.cornerRadius = cornerRadius_;
    filter.pictureSize = pictureSize();
    filter.opacity = renderAlpha();
    return filter;
}

}  // namespace multiscene
