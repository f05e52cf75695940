#pragma once

#include <glm/glm.hpp>

#include "tween/QVTweenItem.h"

namespace multiscene {

/// A tween between two vectors of an object; subclasses say which vector.
class VectorTweenItem : public QVTweenItem {
  public:
    VectorTweenItem(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                    const glm::vec3& endVector3, const TweenTiming& timing);

    void update() override;

  protected:
    const glm::vec3& endVector3() const { return endVector3_; }

  private:
    /// Gives the target the vector of this step.
    virtual void apply(const glm::vec3& value) = 0;

    glm::vec3 startVector3_, endVector3_;
};

}  // namespace multiscene
