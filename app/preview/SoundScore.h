// When which sound of a group is heard.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "app/job/PreparedGroup.h"
#include "videoRenderCore/AUSAudioPlayer.h"
#include "videoRenderCore/QVMediaManage.h"

namespace multiscene {

/// Plays the group once without drawing it, much faster than it lasts, and tells an audio player what sounds:
/// what comes at the end has a say in how loud it is before. Any thread, but for the main and render queues.
class SoundScore {
  public:
    /// `music`: entries that are there from the start. The group may go when this was made.
    SoundScore(const PreparedGroup& group, AUSAudioPlayer::Entries music,
               std::shared_ptr<AUSAudioPlayer> player);
    ~SoundScore();

    /// Begins, once; further calls do nothing.
    void start();
    /// Nothing more is told. Any thread.
    void cancel();
    /// Waits until the sounds up to a frame are known, all are, or `seconds` are over.
    void waitUntilKnown(int64_t frame, double seconds);
    bool isComplete() const;

  private:
    class Notes;
    struct State {
        std::mutex mutex;
        std::condition_variable signal;
        int64_t frames = 0;
        bool isComplete = false;
    };

    void create();

    std::shared_ptr<Playback> playback_;
    SceneGroup group_;
    RenderDriverSettings settings_;
    std::shared_ptr<AUSAudioPlayer> audioPlayer_;
    std::shared_ptr<Notes> notes_;
    std::shared_ptr<State> state_;
    std::mutex starting_;
    std::shared_ptr<QVMultiSceneRenderManager> driver_;
    std::shared_ptr<QVMediaManage> player_;
};

}  // namespace multiscene
