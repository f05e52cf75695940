#pragma once

#include <memory>
#include <string>

#include "core/QVObject3DFpsBase.h"
#include "platform/base/FileGate.h"
#include "playback/VideoTimeSource.h"
#include "videoDecode/QVVideoDecodeBase.h"

namespace multiscene {

class QVVideoReader;

/// What all time sources share: the decoder, the transition at the scene's end and the events for the player.
/// The drawable beside it is the class's other base; it calls frameCompleted() from its renderComplete().
class TimeSourceBase : public VideoTimeSource {
  public:
    void setDelegate(std::weak_ptr<VideoTimeSourceDelegate> delegate) override { delegate_ = delegate; }
    void computeTimeSourceFpsTotal() override;
    void decodeNextFpsWithGroupQueue() override;
    void fpsRenderCompletedHandle() override;
    void cancelDecode() override;
    bool isAlive() const override { return decode_ && !hasEndedAsCurrent_; }

  protected:
    explicit TimeSourceBase(const TimeSourceContext& context);

    /// The same object as a node.
    virtual QVObject3DFpsBase& self() = 0;
    /// Forgets the decoder's last pictures: their textures are gone.
    virtual void dropPictures() {}

    /// Takes the decoder and sets what all decoders need. Once, after construction.
    void setDecode(std::shared_ptr<QVVideoDecodeBase> decode);
    /// Runs `action` on this object while it lives: what the decoder's callbacks are made of.
    template <typename Action>
    auto whileAlive(Action action) {
        return [weak = self().weak_from_this(), action](auto&&... arguments) {
            if (const auto alive = weak.lock()) action(arguments...);
        };
    }
    /// The events after a frame, which must be due.
    void frameCompleted(const Tick& tick);
    std::shared_ptr<QVScene3D> rootScene() const { return rootScene_.lock(); }

    /// A path of "VideoInfo" with its macros resolved against the scene's folder.
    std::string videoPath(const std::string& path) const;
    /// Through which the source's files are opened.
    platform::FileGate& gate() const;
    /// The trace's "texture" of a decoded picture.
    static platform::Value traceOfPicture(const std::string& path, const QVVideoFrameRenderOutput& picture);
    /// Notes a file that cannot be read, and one whose own frame rate differs from "videoFps".
    void report(const QVVideoReader& reader);

  private:
    void sceneTansitionsInit();
    bool isRootSceneCurrent() const;

    TimeSourceContext context_;  // without its scene, which owns this
    std::weak_ptr<QVScene3D> rootScene_;
    std::weak_ptr<VideoTimeSourceDelegate> delegate_;
    std::shared_ptr<QVVideoDecodeBase> decode_;  // shared with the turn that is using it
    bool isLoadNextSceneOnce_ = false, hasEndedAsCurrent_ = false;
    int32_t tansitionsType_ = 0;                              // a SceneRenderType's number
    int64_t tansitionsSceneId_ = 0, tansitionsFpsTotal_ = 0;  // the latter in frames
};

}  // namespace multiscene
