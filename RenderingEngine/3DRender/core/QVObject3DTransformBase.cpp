#include "core/QVObject3DTransformBase.h"

#include <memory>
#include <utility>

#include "animation/TransformItemKeys.h"
#include "core/QVScene3D.h"
#include "core/SceneNodes.h"
#include "format/NodeTypes.h"
#include "platform/base/Saturating.h"

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
    for (size_t index = 0; index < childInfo.size(); ++index)
        addChild(SceneNodes::object3DWithInfo(childInfo[index], scene(),
                                              SceneNodes::keyPathOf(keyPath() + ".childNode", index)));
}

void QVObject3DTransformBase::updateDue(const Tick& tick) {
    if (!transformArray_.empty() && tick.isNew) stepTransformArray(static_cast<int32_t>(tick.frame));
    if (!mutableTransformArray_.empty()) refushMutableTransformWithFps(static_cast<int32_t>(tick.frame));
    QVObject3DFpsBase::updateDue(tick);
}

// The sequence

void QVObject3DTransformBase::setTransformArray(const platform::Value::Array& items) {
    transformArray_.clear();
    for (const platform::Value& item : items) transformArray_.push_back(TransformItem::read(item));
    loadTransformWithIndex(currentTransformIndex_);
}

void QVObject3DTransformBase::loadTransformWithIndex(size_t index) {
    currentTransformIndex_ = index;
    if (index >= transformArray_.size()) return;
    loaded_ = transformArray_[index];
    const auto startWhereItIs = [](TransformItem::Channel& channel, const glm::vec3& now) {
        if (!channel.start) channel.start = now;
    };
    startWhereItIs(loaded_.translate, position());
    startWhereItIs(loaded_.scale, scale());
    startWhereItIs(loaded_.rotate, rotation());
}

void QVObject3DTransformBase::stepTransformArray(int64_t frame) {
    // The start wins: an item that ends where it starts never ends, and the list stops there.
    if (frame == loaded_.sartFps) {
        addTweenOrRefushTransform();
    } else if (frame == loaded_.endFps) {
        if (const auto owner = scene()) owner->tweens().killTweenOf(*this);
        loadTransformWithIndex(currentTransformIndex_ + 1);
    }
}

void QVObject3DTransformBase::addTweenOrRefushTransform() {
    const auto owner = scene();
    if (!owner) return;
    QVTween& tweens = owner->tweens();
    const auto self = std::static_pointer_cast<QVObject3DTransformBase>(shared_from_this());
    const auto duration = static_cast<float>(platform::saturatingDifference(loaded_.endFps, loaded_.sartFps));
    const auto timing = [&](int32_t ease) { return TweenTiming{.duration = duration, .ease = ease}; };
    const TransformItem::Channel &translate = loaded_.translate, &scale = loaded_.scale,
                                 &rotate = loaded_.rotate;
    if (translate.end)
        tweens.translationTo(self, *translate.start, *translate.end, timing(translate.ease));
    else
        setPosition(*translate.start);
    if (scale.end)
        tweens.scaleTo(self, *scale.start, *scale.end, timing(scale.ease));
    else
        setScale(*scale.start);
    if (rotate.end)
        tweens.rotateTo(self, *rotate.start, *rotate.end, timing(rotate.ease));
    else
        setRotation(*rotate.start);
    if (loaded_.texture)
        tweens.textureTramformTo(self, textureMatrixPointer(), loaded_.texture->from, loaded_.texture->to,
                                 timing(rotate.ease));
}

// Independent items

void QVObject3DTransformBase::setMutableTransformArray(const platform::Value::Array& items) {
    mutableTransformArray_.clear();
    for (const platform::Value& item : items)
        if (const auto known = MutableTransformItem::read(item)) mutableTransformArray_.push_back(*known);
}

void QVObject3DTransformBase::refushMutableTransformWithFps(int32_t frame) {
    glm::mat4 matrix(1);
    for (const MutableTransformItem& item : mutableTransformArray_)
        matrix = item.appliedTo(matrix, frame, *this);
    setupMutableTransform(matrix);
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
