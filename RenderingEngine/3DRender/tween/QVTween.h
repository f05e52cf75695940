#pragma once

#include <glm/glm.hpp>
#include <memory>
#include <vector>

#include "tween/QVTextureTranformItem.h"
#include "tween/QVTweenItem.h"

namespace multiscene {

/// The process-wide list of running tweens, stepped once per rendered frame. Render queue only.
class QVTween {
  public:
    QVTween() = delete;

    static void translationTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                              const glm::vec3& endVector3, const TweenTiming& timing);
    static void rotateTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                         const glm::vec3& endVector3, const TweenTiming& timing);
    static void scaleTo(std::shared_ptr<TweenTarget> target, const glm::vec3& startVector3,
                        const glm::vec3& endVector3, const TweenTiming& timing);
    /// Animates `targetPointer`, a matrix inside `owner`.
    static void textureTramformTo(std::shared_ptr<TweenTarget> owner, glm::mat4* targetPointer,
                                  const TextureWindow& from, const TextureWindow& to,
                                  const TweenTiming& timing);

    /// Removes the finished items, then steps the others in the order of their start.
    static void update();

    /// Removes every item that moves the object. Texture tweens write memory, move no object and run on.
    static void killTweenOf(const TweenTarget& object);
    /// Removes every item that touches the object, its texture included: for an object that leaves its scene.
    static void killAllTweenOf(const TweenTarget& object);
    static void killTweenOfScene(const void* scene);
    static void killAllTween();

    static const std::vector<std::unique_ptr<QVTweenItem>>& items();
};

}  // namespace multiscene
