#pragma once

#include "tween/VectorTweenItem.h"

namespace multiscene {

/// Scales an object.
class QVTweenObject3DScaleItem : public VectorTweenItem {
  public:
    using VectorTweenItem::VectorTweenItem;

  private:
    void apply(const glm::vec3& scale) override;
};

}  // namespace multiscene
