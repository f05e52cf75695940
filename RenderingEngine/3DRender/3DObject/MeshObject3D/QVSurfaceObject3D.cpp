#include "3DObject/MeshObject3D/QVSurfaceObject3D.h"

#include <cmath>

#include "core/GLESUtils/ParametricSurface.h"
#include "core/QVKeyAnimationOperators.h"
#include "dataMode/TextSettings.h"
#include "format/NodeTypes.h"

namespace multiscene {

namespace {

// --- keys -----------------------------------------------------------------------------------------------

constexpr double mostUnits = 100'000;

constexpr Key lengthKey(std::string_view name, std::string_view meaning) {
    return {.name = name,
            .type = KeyType::Number,
            .unit = "model units",
            .fallback = "0",
            .meaning = meaning,
            .required = true,
            .minimum = 0,
            .maximum = mostUnits};
}
constexpr Key lengthOrNone(std::string_view name, std::string_view meaning) {
    Key key = lengthKey(name, meaning);
    key.required = false;
    return key;
}
constexpr Key numberKey(std::string_view name, std::string_view unit, std::string_view meaning,
                        std::string_view fallback, double least, double most) {
    return {.name = name,
            .type = KeyType::Number,
            .unit = unit,
            .fallback = fallback,
            .meaning = meaning,
            .minimum = least,
            .maximum = most};
}
constexpr Key segmentsKey(std::string_view fallback, std::string_view meaning) {
    return {.name = "segments",
            .type = KeyType::Integer,
            .fallback = fallback,
            .meaning = meaning,
            .minimum = fewestSegments,
            .maximum = mostSegments};
}

constexpr Key widthKey = lengthKey("modelWidth", "size along x"),
              heightKey = lengthKey("modelHeight", "size along y"), radiusKey = lengthKey("radius", "radius");
constexpr std::string_view aroundIt = "how many pieces it has once around";
constexpr Key isOpenKey{
    .name = "isOpen", .type = KeyType::Bool, .fallback = "0", .meaning = "without its flat ends"};

constexpr Key sphereKeyList[] = {radiusKey, segmentsKey("48", aroundIt)};
constexpr Key cylinderKeyList[] = {radiusKey, heightKey, isOpenKey, segmentsKey("48", aroundIt)};
constexpr Key coneKeyList[] = {radiusKey, lengthOrNone("topRadius", "radius of its upper end; 0: a point"),
                               heightKey, isOpenKey, segmentsKey("48", aroundIt)};
constexpr Key torusKeyList[] = {lengthKey("radius", "from the middle of the ring to that of its tube"),
                                lengthKey("tubeRadius", "radius of the tube"), segmentsKey("64", aroundIt)};
constexpr Key boxKeyList[] = {widthKey, heightKey, lengthKey("modelDepth", "size along z"),
                              lengthOrNone("cornerRadius", "radius of edges and corners"),
                              segmentsKey("48", "how many pieces a whole circle of its edges would have")};
constexpr Key waveKeyList[] = {
    widthKey,
    heightKey,
    lengthKey("waveHeight", "how far its right edge swings to either side"),
    lengthKey("waveLength", "from crest to crest"),
    numberKey("heldWidth", "share of the width", "from the left edge, over which the waves grow; 0: all wave",
              "1", 0, 1),
    numberKey("wavePhase", "waves", "how far the waves have run; 1 looks like 0", "0", -1e6, 1e6),
    segmentsKey("64", "how many pieces it has along x")};
constexpr Key curlKeyList[] = {
    widthKey, heightKey, lengthKey("radius", "radius of the roll"),
    numberKey("curl", "share of the width", "what is rolled up, from the right edge on, towards the viewer",
              "0", 0, 1),
    segmentsKey("96", "how many pieces it has along x")};

constexpr KeyTable sphereKeys{"sphere", "A ball; the picture once around it.", nullptr, sphereKeyList};
constexpr KeyTable cylinderKeys{"cylinder", "A cylinder that stands; the picture once around it.", nullptr,
                                cylinderKeyList};
constexpr KeyTable coneKeys{"cone", "A cone that stands, or a part of one.", nullptr, coneKeyList};
constexpr KeyTable torusKeys{"torus", "A ring that lies flat; the picture once around it.", nullptr,
                             torusKeyList};
constexpr KeyTable boxKeys{"roundedBox", "A box with round edges; each side shows the picture.", nullptr,
                           boxKeyList};
constexpr KeyTable waveKeys{"wave", "A flag that waves; its left edge is held.", nullptr, waveKeyList};
constexpr KeyTable curlKeys{"curl", "A page that rolls up.", nullptr, curlKeyList};

/// The numbers of a surface, each within the range of its key.
class Numbers {
  public:
    Numbers(const platform::Value& info, const KeyTable& keys, float wavePhase, float rolledUp)
        : phase(wavePhase), curl(rolledUp), reader_(keys, info), keys_(keys) {}

    float operator()(std::string_view key) const { return readInRange(reader_, keys_, key); }
    int segments() const { return static_cast<int>((*this)("segments")); }
    bool isOpen() const { return reader_.boolean("isOpen"); }

    const float phase, curl;

  private:
    const KeyReader reader_;
    const KeyTable& keys_;
};

}  // namespace

struct SurfaceKind {
    std::string_view name;
    const KeyTable* keys;
    std::vector<MeshVertex> (*triangles)(const Numbers& number);
    bool isClosed;  ///< unless it is open
    std::string_view moves = {};
};

namespace {

std::vector<MeshVertex> tube(const Numbers& number, float topRadius) {
    return tubeTriangles({.topRadius = topRadius,
                          .bottomRadius = number("radius"),
                          .height = number("modelHeight"),
                          .hasEnds = !number.isOpen()},
                         number.segments());
}

constexpr SurfaceKind surfaceKinds[] = {
    {"sphere", &sphereKeys,
     [](const Numbers& number) { return sphereTriangles(number("radius"), number.segments()); }, true},
    {"cylinder", &cylinderKeys, [](const Numbers& number) { return tube(number, number("radius")); }, true},
    {"cone", &coneKeys, [](const Numbers& number) { return tube(number, number("topRadius")); }, true},
    {"torus", &torusKeys,
     [](const Numbers& number) {
         return torusTriangles(number("radius"), number("tubeRadius"), number.segments());
     },
     true},
    {"roundedBox", &boxKeys,
     [](const Numbers& number) {
         return roundedBoxTriangles({number("modelWidth"), number("modelHeight"), number("modelDepth")},
                                    number("cornerRadius"), number.segments());
     },
     true},
    {"wave", &waveKeys,
     [](const Numbers& number) {
         return waveTriangles({.width = number("modelWidth"),
                               .height = number("modelHeight"),
                               .amplitude = number("waveHeight"),
                               .waveLength = number("waveLength"),
                               .phase = number.phase,
                               .heldWidth = number("heldWidth")},
                              number.segments());
     },
     false, "wavePhase"},
    {"curl", &curlKeys,
     [](const Numbers& number) {
         return curlTriangles({.width = number("modelWidth"),
                               .height = number("modelHeight"),
                               .radius = number("radius"),
                               .curl = number.curl},
                              number.segments());
     },
     false, "curl"},
};

constexpr KeyVariants surfaceVariants = variantsOfList<surfaceKinds>("surface", "surfaceType");

constexpr Key surfaceInfoKeyList[] = {
    {.name = "surfaceType", .type = KeyType::Choice, .meaning = "the shape", .required = true},
};
constexpr KeyTable surfaceInfoKeys{"SurfaceInfo", "The shape and size of a surface.", nullptr,
                                   surfaceInfoKeyList, &surfaceVariants};

constexpr Key endOf(std::string_view name, std::string_view meaning, double least, double most) {
    return {.name = name, .type = KeyType::Number, .meaning = meaning, .minimum = least, .maximum = most};
}
constexpr Key surfaceAnimationKeyList[] = {
    endOf("startRenderAlpha", "opacity at the start", 0, 1),
    endOf("endRenderAlpha", "opacity at the end", 0, 1),
    endOf("startWavePhase", "phase of a wave at the start, waves", -1e6, 1e6),
    endOf("endWavePhase", "phase at the end; larger: the waves run to the right", -1e6, 1e6),
    endOf("startCurl", "what is rolled up of a page at the start, share of its width", 0, 1),
    endOf("endCurl", "what is rolled up at the end", 0, 1),
};
constexpr KeyTable surfaceAnimationKeys{"AnimationInfo of a surface", "A change of its opacity or shape.",
                                        &animationKeys, surfaceAnimationKeyList};

constexpr Key surfaceKeyList[] = {
    {.name = "SurfaceInfo",
     .type = KeyType::Dictionary,
     .meaning = "shape and size",
     .required = true,
     .children = &surfaceInfoKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of opacity, waves and curl",
     .children = &surfaceAnimationKeys},
};
constexpr KeyTable surfaceKeys{"QVSurfaceObject3D",
                               "A curved surface that takes light; depths are always compared.", &meshKeys,
                               surfaceKeyList};

/// The keys that have both ends of a number.
platform::Value::Array keysWith(const platform::Value::Array& keys, const char* start, const char* end) {
    platform::Value::Array found;
    for (const platform::Value& key : keys)
        if (key.has(start) && key.has(end)) found.push_back(key);
    return found;
}

}  // namespace

QV_REGISTER_NODE_TYPE(QVSurfaceObject3D, surfaceKeys);

void QVSurfaceObject3D::animationWithInfo(const platform::Value::Array& keys) {
    const auto read = [&](AnimatedNumber& number, const char* start, const char* end) {
        const platform::Value::Array own = keysWith(keys, start, end);
        number.read(own, surfaceAnimationKeys, start, end);
        return !own.empty();
    };
    read(opacity_, "startRenderAlpha", "endRenderAlpha");
    const bool waves = read(phase_, "startWavePhase", "endWavePhase");
    const bool curls = read(curl_, "startCurl", "endCurl");
    isMoving_ = waves || curls;
}

void QVSurfaceObject3D::readShape(const platform::Value& info) {
    surfaceInfo_ = info["SurfaceInfo"];
    const std::string name = surfaceInfo_.string("surfaceType");
    for (const SurfaceKind& kind : surfaceKinds)
        if (kind.name == name) kind_ = &kind;
    if (!kind_) return;
    isClosed_ = kind_->isClosed && !surfaceInfo_.boolean("isOpen");
    const Numbers number(surfaceInfo_, *kind_->keys, 0, 0);
    if (kind_->moves == "wavePhase") phase_.setValue(number("wavePhase"));
    if (kind_->moves == "curl") curl_.setValue(number("curl"));
    isMoving_ = isMoving_ && !kind_->moves.empty();
    makeTriangles();
}

void QVSurfaceObject3D::makeTriangles() {
    madePhase_ = phase_.value();
    madeCurl_ = curl_.value();
    std::vector<MeshVertex> corners =
        kind_->triangles(Numbers(surfaceInfo_, *kind_->keys, madePhase_, madeCurl_));
    // Sizes of 0 give directions that are none.
    for (const MeshVertex& corner : corners)
        if (!std::isfinite(corner.normal.x + corner.normal.y + corner.normal.z)) corners.clear();
    if (isMoving_)
        moving_ = std::move(corners);
    else
        still_ = Geometry(std::move(corners));
}

void QVSurfaceObject3D::updateKeyFrames(int64_t frame) {
    for (AnimatedNumber* number : {&opacity_, &phase_, &curl_}) number->updateData(frame, *this);
    if (kind_ && isMoving_ && (madePhase_ != phase_.value() || madeCurl_ != curl_.value())) makeTriangles();
}

void QVSurfaceObject3D::draw(Painter& painter) {
    if (!(opacity_.value() > 0)) return;
    const bool hidesItsInside = isClosed_ && opacity_.value() >= 1 && isOpaque();
    drawShape(painter, {.corners = isMoving_ ? std::span<const MeshVertex>(moving_) : still_.corners(),
                        .kept = isMoving_ ? nullptr : &still_,
                        .sides = hidesItsInside ? MeshSides::Outer : MeshSides::Both,
                        .isSmooth = true,
                        .comparesDepths = true,
                        .opacity = opacity_.value()});
}

void QVSurfaceObject3D::addTraceFields(platform::Value::Dictionary& fields) {
    QVMeshObject3D::addTraceFields(fields);
    platform::Value::Dictionary values{{"renderAlpha", static_cast<double>(opacity_.value())}};
    if (kind_ && !kind_->moves.empty())
        values[std::string(kind_->moves)] =
            static_cast<double>(kind_->moves == "curl" ? curl_.value() : phase_.value());
    fields["values"] = platform::Value(std::move(values));
}

}  // namespace multiscene
