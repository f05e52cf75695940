#include "core/QVObject3DTransformBase.h"

#include <memory>
#include <utility>

#include "core/NodeTypes.h"
#include "core/SceneNodes.h"
#include "core/TransformItemKeys.h"
#include "platform/base/Saturating.h"
#include "tween/QVTween.h"

namespace multiscene {

static constexpr Key bezierKeyList[] = {
    {.name = "bezierIdentifier",
     .type = KeyType::Text,
     .meaning = "the path's name: a whole number of 30000 or more",
     .required = true},
    {.name = "interpolationTotal",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of samples",
     .required = true,
     .minimum = 1,
     .maximum = ZBBezierModel::maxInterpolationTotal},
    {.name = "controlPoints",
     .type = KeyType::TextArray,
     .meaning = "control points \"a,b\" in curve order",
     .required = true,
     .minimum = 1,
     .maximum = ZBBezierModel::maxControlPoints},
    {.name = "interpolationXYZ",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "axes of a (units) and b (tens): 1 x, 2 y, 3 z; 21 is a curve in x and y",
     .required = true,
     .minimum = 11,
     .maximum = 33},
};
constexpr KeyTable bezierKeys{"BezierArray", "A motion path or ease curve.", nullptr, bezierKeyList};

static constexpr Key transformKeyList[] = {
    {.name = "TransformArray",
     .type = KeyType::Array,
     .meaning = "motion items played one after another",
     .children = &transformItemKeys},
    {.name = "MutableTransformArray",
     .type = KeyType::Array,
     .meaning = "motion items that overlap freely",
     .children = &mutableItemKeys},
    {.name = "BezierArray",
     .type = KeyType::Array,
     .meaning = "motion paths and ease curves",
     .children = &bezierKeys},
    {.name = "childNode",
     .type = KeyType::Array,
     .meaning = "nodes that move with this one",
     .children = &nodeKeys},
};
const KeyTable transformKeys{"QVObject3DTransformBase", "A group of nodes that moves.", &fpsBaseKeys,
                             transformKeyList};

QV_REGISTER_NODE_TYPE(QVObject3DTransformBase, transformKeys);

void QVObject3DTransformBase::rendInfoWithDic(const platform::Value& info) {
    QVObject3DFpsBase::rendInfoWithDic(info);
    const KeyReader reader(transformKeys, info);
    if (reader.has("TransformArray")) setTransformArray(reader.array("TransformArray"));
    if (reader.has("MutableTransformArray")) setMutableTransformArray(reader.array("MutableTransformArray"));
    addBezierArray(reader.array("BezierArray"));
    addSubObject3DWithArray(reader.array("childNode"));
}

void QVObject3DTransformBase::addSubObject3DWithArray(const platform::Value::Array& childInfo) {
    for (const platform::Value& entry : childInfo) addChild(SceneNodes::object3DWithInfo(entry, scene()));
}

void QVObject3DTransformBase::updateData(const platform::CMTime& time) {
    if (!isNeedRenderWithCMTime(time)) return;
    if (!transformArray_.empty()) stepTransformArray(static_cast<int32_t>(time.value));
    if (!mutableTransformArray_.empty()) refushMutableTransformWithFps(static_cast<int32_t>(time.value));
    QVObject3DFpsBase::updateData(time);
}

// The sequence

void QVObject3DTransformBase::setTransformArray(platform::Value::Array items) {
    transformArray_ = std::move(items);
    loadTransformWithIndex(currentTransformIndex_);
}

void QVObject3DTransformBase::loadTransformWithIndex(int64_t index) {
    if (index < static_cast<int64_t>(transformArray_.size()))
        transformInfoWithDic(transformArray_[static_cast<size_t>(index)]);
    currentTransformIndex_ = index;
}

void QVObject3DTransformBase::transformInfoWithDic(const platform::Value& item) {
    const KeyReader reader(transformItemKeys, item);
    currentTransformSartFps_ = reader.integer("sartFps");
    currentTransformEndFps_ = reader.integer("endFps");
    const auto next = static_cast<size_t>(currentTransformIndex_ + 1);
    nextTransformSartFps_ =
        next < transformArray_.size() ? transformArray_[next].integer("sartFps") : INT64_MAX;

    const auto read = [&](Channel& channel, const char* startKey, const char* endKey, const char* easeKey,
                          const glm::vec3& current) {
        channel.isAnimation = reader.has(endKey);
        if (channel.isAnimation) channel.end = reader.vector3(endKey);
        channel.ease = channel.isAnimation ? reader.int32(easeKey) : 0;
        channel.start = reader.has(startKey) ? reader.vector3(startKey) : current;
    };
    read(translate_, "startTranslate", "endTranslate", "translateEase", {x(), y(), z()});
    read(scale_, "startScale", "endScale", "scaleEase", scale());
    read(rotate_, "startRotate", "endRotate", "rotateEase", rotation());

    texture_.isAnimation = reader.has("endTextureOrigin");
    if (!texture_.isAnimation) return;
    texture_.from = {reader.vector2("startTextureOrigin"), reader.vector2("startTextureSize")};
    texture_.to = {reader.vector2("endTextureOrigin"), reader.vector2("endTextureSize")};
}

void QVObject3DTransformBase::stepTransformArray(int64_t frame) {
    // The last turn of a video that ran dry repeats a frame number: no item starts or ends twice.
    if (frame == std::exchange(lastSteppedFrame_, frame)) return;
    // The start wins: an item that ends where it starts never ends, and the list stops there.
    if (frame == currentTransformSartFps_) {
        addTweenOrRefushTransform();
    } else if (frame == currentTransformEndFps_) {
        QVTween::killTweenOf(*this);
        loadTransformWithIndex(currentTransformIndex_ + 1);
    }
}

void QVObject3DTransformBase::addTweenOrRefushTransform() {
    const auto self = std::static_pointer_cast<QVObject3DTransformBase>(shared_from_this());
    const auto timing = [&](int32_t ease) {
        return TweenTiming{.duration = static_cast<float>(platform::saturatingDifference(
                               currentTransformEndFps_, currentTransformSartFps_)),
                           .ease = ease};
    };
    if (translate_.isAnimation)
        QVTween::translationTo(self, translate_.start, translate_.end, timing(translate_.ease));
    else
        setPosition(translate_.start);
    if (scale_.isAnimation)
        QVTween::scaleTo(self, scale_.start, scale_.end, timing(scale_.ease));
    else
        setScale(scale_.start);
    if (rotate_.isAnimation)
        QVTween::rotateTo(self, rotate_.start, rotate_.end, timing(rotate_.ease));
    else
        setRotation(rotate_.start);
    // The texture follows the rotation's ease: templates are tuned to it.
    if (texture_.isAnimation)
        QVTween::textureTramformTo(self, textureMatrixPointer(), texture_.from, texture_.to,
                                   timing(rotate_.ease));
}

// Motion paths

void QVObject3DTransformBase::addBezierArray(const platform::Value::Array& paths) {
    for (const platform::Value& path : paths) {
        const KeyReader reader(bezierKeys, path);
        ZBBezierModel model =
            ZBBezierModel::bezierWithInterpolationTotal(reader.integer("interpolationTotal"));
        model.setInterpolationXYZ(reader.int32("interpolationXYZ"));
        std::vector<std::string> points;
        for (const platform::Value& point : reader.array("controlPoints"))
            points.push_back(point.stringValue());
        model.computeBezierWithControlPoints(points);
        translateBezier_.insert_or_assign(reader.text("bezierIdentifier"), std::move(model));
    }
}

BezierSample QVObject3DTransformBase::bezierResultWithTime(float time,
                                                           const std::string& bezierIdentifier) const {
    const auto found = translateBezier_.find(bezierIdentifier);
    if (found == translateBezier_.end() || found->second.interpolationTotal() == 0) return {};
    return {found->second.recordAtTime(time), found->second.interpolationXYZ(), true};
}

void QVObject3DTransformBase::addTraceFields(platform::Value::Dictionary& fields) {
    QVObject3DFpsBase::addTraceFields(fields);
    platform::Value::Array elements;
    for (int i = 0; i < 16; ++i) elements.emplace_back(static_cast<double>((&textureMatrix_[0][0])[i]));
    fields["textureMatrix"] = platform::Value(std::move(elements));
}

}  // namespace multiscene
