#pragma once

#include <glm/glm.hpp>

#include "tween/QVTweenItem.h"

namespace multiscene {

/// Scales an object.
class QVTweenObject3DScaleItem : public QVTweenItem {
  public:
    QVTweenObject3DScaleItem(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                             const glm::vec3& endVector3, float start, const TweenTiming& timing)
        : QVTweenItem(std::move(target), start, timing),
          startVector3_(startVector3),
          endVector3_(endVector3) {}

    void update(float time) override;

  private:
    glm::vec3 startVector3_, endVector3_;
};

}  // namespace multiscene
