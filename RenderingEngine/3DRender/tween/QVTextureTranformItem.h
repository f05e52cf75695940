#pragma once

#include <glm/glm.hpp>

#include "tween/QVTweenItem.h"

namespace multiscene {

/// Where a texture's coordinates start and how much of it they span, both in texture units.
struct TextureWindow {
    glm::vec2 origin{0};
    glm::vec2 size{0};
};

/// Animates the scale and origin of a texture matrix in place.
class QVTextureTranformItem : public QVTweenItem {
  public:
    /// `targetPointer` shares the life of `owner`, the object that the matrix belongs to.
    QVTextureTranformItem(std::shared_ptr<TweenTarget> owner, glm::mat4* targetPointer,
                          const TextureWindow& from, const TextureWindow& to, const TweenTiming& timing)
        : QVTweenItem(std::move(owner), timing), targetPointer_(targetPointer), from_(from), to_(to) {}

    void update() override;
    bool isObjectTween() const override { return false; }

  private:
    glm::mat4* targetPointer_;
    TextureWindow from_, to_;
};

}  // namespace multiscene
