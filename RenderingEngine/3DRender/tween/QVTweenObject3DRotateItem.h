#pragma once

#include "tween/VectorTweenItem.h"

namespace multiscene {

/// Turns an object about its axes; vectors in degrees.
class QVTweenObject3DRotateItem : public VectorTweenItem {
  public:
    using VectorTweenItem::VectorTweenItem;

  private:
    void apply(const glm::vec3& degrees) override;
};

}  // namespace multiscene
