#pragma once

#include <memory>

#include "format/TypeRegistry.h"
#include "platform/base/Value.h"

namespace multiscene {

class QVObjectContainer3D;
class QVScene3D;
class VideoTimeSource;
class RenderDriver;

/// What a time source tells the player, on the render queue. The player is referred to weakly.
class VideoTimeSourceDelegate {
  public:
    virtual ~VideoTimeSourceDelegate() = default;
    virtual void didStartRender(VideoTimeSource&, const std::shared_ptr<QVScene3D>&) {}
    /// The scene's last frame was completed.
    virtual void didCompleteRender(VideoTimeSource&, const std::shared_ptr<QVScene3D>&) {}
    /// The scene's first frame was completed: prepare the following scene.
    virtual void didLoadNextScene(VideoTimeSource&, const std::shared_ptr<QVScene3D>&) {}
    /// The frames left equal the transition's length. `tansitionsType`: a SceneRenderType's number.
    virtual void didSceneTransitions(VideoTimeSource&, int32_t /*tansitionsType*/,
                                     int64_t /*tansitionsSceneId*/) {}
};

/// The clock of a scene: a node that is also asked for each frame's time. Render queue only.
class VideoTimeSource {
  public:
    virtual ~VideoTimeSource() = default;

    /// The same object as a node of the scene.
    virtual std::shared_ptr<QVObjectContainer3D> node() = 0;
    virtual void setDelegate(std::weak_ptr<VideoTimeSourceDelegate> delegate) = 0;
    /// Takes the node's "endFps" as the number of the last frame.
    virtual void computeTimeSourceFpsTotal() = 0;
    /// Before a frame: decodes the next picture and sets the scene's currentRenderTime.
    virtual void decodeNextFpsWithGroupQueue() = 0;
    /// After a frame: ends the source, and reports it, when it has completed; again after every frame that
    /// the player still plays.
    virtual void fpsRenderCompletedHandle() = 0;
    /// Stops decoding and lets go of the decoder. May be called twice.
    virtual void cancelDecode() = 0;
    /// False once it was cancelled, or has ended as the clock of the current scene: the player then has heard
    /// all that it will ever hear.
    virtual bool isAlive() const = 0;
};

/// What a time source is made with.
struct TimeSourceContext {
    RenderDriver* renderManager = nullptr;
    std::shared_ptr<QVScene3D> scene;
    bool isPlayAtActualSpeed = false;     ///< preview: never faster than the video's own rate
    platform::Value sceneTansitionsInfo;  ///< the transition at this scene's end, or none
};

/// Time-source types by the "type" of the "TimeSource" dictionary. The maker reads what it needs to open its
/// media; the node's keys follow by rendInfoWithDic.
using TimeSourceTypes =
    TypeRegistry<VideoTimeSource, const platform::Value& /*info*/, const TimeSourceContext&>;

inline constexpr KeyVariants timeSourceVariants = variantsOfTypes<TimeSourceTypes>("time-source", "type");
/// "TimeSource".
inline constexpr KeyTable timeSourceKeys{
    "Clocks", "What counts a scene's frames.", nullptr, {}, &timeSourceVariants};

}  // namespace multiscene
