#pragma once

#include <glm/glm.hpp>
#include <memory>
#include <vector>

#include "tween/QVTextureTranformItem.h"
#include "tween/QVTweenItem.h"

namespace multiscene {

/// The running tweens of a scene, stepped once per rendered frame. Render queue only.
class QVTween {
  public:
    void translationTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                       const glm::vec3& endVector3, const TweenTiming& timing);
    void rotateTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                  const glm::vec3& endVector3, const TweenTiming& timing);
    void scaleTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                 const glm::vec3& endVector3, const TweenTiming& timing);
    /// Animates `targetPointer`, a matrix inside `owner`.
    void textureTramformTo(std::shared_ptr<TweenTarget> owner, glm::mat4* targetPointer,
                           const TextureWindow& from, const TextureWindow& to, const TweenTiming& timing);

    /// Removes the finished items, then steps the others in the order of their start.
    void update();

    /// Removes every item that moves the object. Texture tweens write memory, move no object and run on.
    void killTweenOf(const TweenTarget& object);
    /// Removes every item that touches the object, its texture included: for an object that leaves its scene.
    void killAllTweenOf(const TweenTarget& object);
    void killAllTween();

    const std::vector<std::unique_ptr<QVTweenItem>>& items() const { return items_; }

  private:
    std::vector<std::unique_ptr<QVTweenItem>> items_;
};

}  // namespace multiscene
