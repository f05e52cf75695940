#pragma once

#include <cstdint>
#include <memory>

#include "platform/base/Value.h"

namespace multiscene {

class Painter;
class Playback;
class QVScene3D;

/// How the driver composes its scenes; the numbers are the scene-group file's after mapping.
enum class SceneRenderType : int32_t {
    Single = 0,             ///< the current scene alone
    TextureTransition = 1,  ///< current and next drawn into textures, composed by the transition scene
    Overlay = 2,            ///< the transition scene drawn over the current scene
};

/// What scenes and nodes may ask of the render driver, which lives in a later layer. Render queue only.
class RenderDriver {
  public:
    virtual ~RenderDriver() = default;

    virtual int32_t bufferWidth() const = 0;   ///< pixels
    virtual int32_t bufferHeight() const = 0;  ///< pixels
    /// Scene textures of transitions are at most this wide.
    virtual int32_t sceneTextureMaxWidth() const = 0;
    virtual SceneRenderType sceneRenderType() const = 0;
    virtual std::shared_ptr<QVScene3D> currentScene() const = 0;
    virtual std::shared_ptr<QVScene3D> nextScene() const = 0;
    virtual std::shared_ptr<QVScene3D> transitionsScene() const = 0;
    /// What the video is played with.
    virtual Playback& playback() = 0;
    /// What the scenes are drawn with.
    virtual Painter& painter() = 0;
    /// Frames that the group has rendered since the last reset.
    virtual int64_t currentRenderFps() const = 0;
    /// A sound effect starts at this very frame; `audioInfo` is an audio entry with scene-relative frames.
    virtual void startSoundEffect(const platform::Value& audioInfo) = 0;
    /// A sound effect's last frame is over; only a live preview has a channel to close.
    virtual void stopSoundEffect(const std::string& audioKey) = 0;
};

}  // namespace multiscene
