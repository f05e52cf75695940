#pragma once

#include <map>
#include <string>

#include "core/QVObject3DFpsBase.h"
#include "tween/QVTextureTranformItem.h"
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
    void updateData(const platform::CMTime& time) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;

    void setTransformArray(platform::Value::Array items);
    const platform::Value::Array& transformArray() const { return transformArray_; }
    const platform::Value::Array& mutableTransformArray() const { return mutableTransformArray_; }
    void setMutableTransformArray(platform::Value::Array items) { mutableTransformArray_ = std::move(items); }

    int64_t currentTransformIndex() const { return currentTransformIndex_; }
    int64_t currentTransformSartFps() const { return currentTransformSartFps_; }
    int64_t currentTransformEndFps() const { return currentTransformEndFps_; }
    int64_t nextTransformSartFps() const { return nextTransformSartFps_; }

    /// The texture-coordinate matrix; a texture tween writes it in place.
    const glm::mat4& textureMatrix() const { return textureMatrix_; }
    glm::mat4* textureMatrixPointer() { return &textureMatrix_; }

    /// Registers motion paths; a later one of the same name replaces the earlier.
    void addBezierArray(const platform::Value::Array& paths);
    BezierSample bezierResultWithTime(float time, const std::string& bezierIdentifier) const override;

    /// Rebuilds the mutable transform from the items that cover the frame.
    void refushMutableTransformWithFps(int32_t frame);

    /// One mutable item applied to a matrix; outside the item's frames the matrix comes back unchanged.
    static glm::mat4 computeTranslate(const platform::Value& item, const glm::mat4& matrix, int32_t frame,
                                      const TweenTarget* target);
    static glm::mat4 computeScale(const platform::Value& item, const glm::mat4& matrix, int32_t frame,
                                  const TweenTarget* target);
    static glm::mat4 computeRotate(const platform::Value& item, const glm::mat4& matrix, int32_t frame,
                                   const TweenTarget* target);

  private:
    /// One channel of the loaded item.
    struct Channel {
        bool isAnimation = false;
        glm::vec3 start{0}, end{0};
        int32_t ease = 0;
    };
    struct TextureChannel {
        bool isAnimation = false;
        TextureWindow from, to;
    };

    void loadTransformWithIndex(int64_t index);
    void transformInfoWithDic(const platform::Value& item);
    void stepTransformArray(int64_t frame);
    void addTweenOrRefushTransform();
    void addSubObject3DWithArray(const platform::Value::Array& childInfo);

    platform::Value::Array transformArray_, mutableTransformArray_;
    int64_t currentTransformIndex_ = 0;
    int64_t currentTransformSartFps_ = 0, currentTransformEndFps_ = 0;
    int64_t nextTransformSartFps_ = INT64_MAX;
    int64_t lastSteppedFrame_ = -1;
    Channel translate_, scale_{.start = glm::vec3(1)}, rotate_;
    TextureChannel texture_;
    glm::mat4 textureMatrix_{1};
    std::map<std::string, ZBBezierModel> translateBezier_;
};

}  // namespace multiscene
