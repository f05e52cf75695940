#pragma once

#include <map>
#include <string>
#include <vector>

#include "animation/MutableTransformItem.h"
#include "animation/TransformItem.h"
#include "core/QVObject3DFpsBase.h"
#include "tween/ZBBezierModel.h"

namespace multiscene {

extern const KeyTable transformKeys;

/// A node that moves: a sequence of key items played through tweens ("TransformArray"), a set of independent
/// items evaluated into a matrix each frame ("MutableTransformArray"), named motion paths and child nodes.
///
/// Items of the sequence advance on exact frame numbers: an item is started on its "sartFps" and left on its
/// "endFps", where the next one is loaded. Its last applied progress is (D - 1)/D of its D frames, and an
/// item that starts on the frame on which its predecessor ends never moves the node.
class QVObject3DTransformBase : public QVObject3DFpsBase {
  public:
    const char* className() const override { return "QVObject3DTransformBase"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;

    /// What the items hold is read now, not when they are played.
    void setTransformArray(const platform::Value::Array& items);
    void setMutableTransformArray(const platform::Value::Array& items);
    const std::vector<TransformItem>& transformArray() const { return transformArray_; }
    const std::vector<MutableTransformItem>& mutableTransformArray() const { return mutableTransformArray_; }

    size_t currentTransformIndex() const { return currentTransformIndex_; }

    /// The texture-coordinate matrix; a texture tween writes it in place.
    const glm::mat4& textureMatrix() const { return textureMatrix_; }
    glm::mat4* textureMatrixPointer() { return &textureMatrix_; }

    /// Registers motion paths; a later one of the same name replaces the earlier.
    void addBezierArray(const platform::Value::Array& paths);
    BezierSample bezierResultWithTime(float time, const std::string& bezierIdentifier) const override;

    /// Rebuilds the mutable transform from the items that cover the frame.
    void refushMutableTransformWithFps(int32_t frame);

  protected:
    bool isUpdatedAt(int64_t frame) const override { return visible() && isDueAt(frame); }
    void updateDue(const Tick& tick) override;

  private:
    void loadTransformWithIndex(size_t index);
    void stepTransformArray(int64_t frame);
    void addTweenOrRefushTransform();
    void addSubObject3DWithArray(const platform::Value::Array& childInfo);

    std::vector<TransformItem> transformArray_;
    std::vector<MutableTransformItem> mutableTransformArray_;
    size_t currentTransformIndex_ = 0;
    TransformItem loaded_;  // every channel has a start
    glm::mat4 textureMatrix_{1};
    std::map<std::string, ZBBezierModel> translateBezier_;
};

}  // namespace multiscene
