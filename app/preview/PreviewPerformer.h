// The worker's half of a preview: reads the template, draws frames and mixes sound for the window.
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

#include "app/preview/HeldPlayer.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/SharedMemory.h"
#include "platform/fence/Channel.h"

namespace multiscene {

/// Main thread; pumps the main queue.
class PreviewPerformer {
  public:
    /// `isWatching`: what is wrong with the template is told the window, which waits for better files; else
    /// it ends the work. Both references outlive this.
    PreviewPerformer(platform::Channel& window, const RenderRequest& request, bool isWatching,
                     JobObserver& observer, std::stop_token stop);
    ~PreviewPerformer();

    /// Until the window is closed or gone. Throws platform::Error.
    void run();

  private:
    struct PictureRequest {
        int64_t serial = 0, frame = 0;
        int slot = 0;
    };
    /// The sound of what was opened last may not be known yet; until it is, what was open before sounds.
    struct Sounding {
        std::shared_ptr<AUSAudioPlayer> player;
        std::shared_ptr<SoundScore> score;
        int framesPerSecond = 30;
    };

    void listen();
    void take(const platform::Message& message);
    bool hasOtherWork();
    void open();
    void perform(const PictureRequest& request);
    void tellShown(const PictureRequest& request, bool isShown, double milliseconds);
    void startSound();
    void giveSound(int64_t from, int64_t count);
    void waitFor(SoundScore& score, int64_t frame);
    std::optional<Sounding> soundingNow();

    platform::Channel& window_;
    const RenderRequest& request_;
    const bool isWatching_;
    JobObserver& observer_;
    const std::stop_token stop_;

    std::shared_ptr<platform::SharedMemory> pictures_;
    std::unique_ptr<HeldPlayer> player_;
    FrameStatistics told_;

    std::mutex mutex_;
    bool isClosed_ = false, isOpenAsked_ = true;
    std::optional<PictureRequest> asked_;
    std::optional<Sounding> sounding_, coming_;
    double signedAt_ = 0;

    const SoundScore* awaited_ = nullptr;  // the sound queue's, as is
    double patience_ = 0;                  // what is left of it for this score, in seconds

    platform::DispatchQueue sound_{"preview sound"};
    std::thread listener_;
};

}  // namespace multiscene
