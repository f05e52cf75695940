#pragma once

#include "tween/VectorTweenItem.h"

namespace multiscene {

/// Moves an object. An end value of 30000 or more on an axis names the path that gives that axis.
class QVTweenObject3DPositionItem : public VectorTweenItem {
  public:
    using VectorTweenItem::VectorTweenItem;

  private:
    void apply(const glm::vec3& position) override;
};

}  // namespace multiscene
