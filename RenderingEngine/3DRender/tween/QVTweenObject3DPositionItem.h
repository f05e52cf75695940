#pragma once

#include <glm/glm.hpp>

#include "tween/QVTweenItem.h"

namespace multiscene {

/// Moves an object. An end value of 30000 or more on an axis names the path that gives that axis.
class QVTweenObject3DPositionItem : public QVTweenItem {
  public:
    QVTweenObject3DPositionItem(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                                const glm::vec3& endVector3, float start, const TweenTiming& timing)
        : QVTweenItem(std::move(target), start, timing),
          startVector3_(startVector3),
          endVector3_(endVector3) {}

    void update(float time) override;

  private:
    glm::vec3 startVector3_, endVector3_;
};

}  // namespace multiscene
