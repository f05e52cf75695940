#include "app/preview/SoundScore.h"

#include <chrono>

namespace multiscene {

/// Hears the sounds as the exporter does: a mix needs no end of them.
class SoundScore::Notes : public SoundSink {
  public:
    Notes(AUSAudioPlayer::Entries music, std::shared_ptr<AUSAudioPlayer> player)
        : entries_(std::move(music)), player_(std::move(player)) {}

    void addAudioTrackWithInfo(const platform::Value& info) override {
        entries_.push_back(info);
        tell();
    }
    void tell() const { player_->followScore(entries_); }

  private:
    AUSAudioPlayer::Entries entries_;
    std::shared_ptr<AUSAudioPlayer> player_;
};

SoundScore::SoundScore(const PreparedGroup& group, AUSAudioPlayer::Entries music,
                       std::shared_ptr<AUSAudioPlayer> player)
    : playback_(group.playback->twin()),
      group_(group.group),
      audioPlayer_(std::move(player)),
      notes_(std::make_shared<Notes>(std::move(music), audioPlayer_)),
      state_(std::make_shared<State>()) {
    settings_.bufferWidth = group.layout.drawnWidth;
    settings_.bufferHeight = group.layout.drawnHeight;
    settings_.renderer = Renderer::Software;
    audioPlayer_->setTotalFrames(group.totalFrames);
}

SoundScore::~SoundScore() { cancel(); }

void SoundScore::start() {
    const std::lock_guard lock(starting_);
    if (!driver_ && !isComplete()) create();
}

void SoundScore::create() {
    notes_->tell();
    driver_ = QVMultiSceneRenderManager::initWithFrameSink(playback_, nullptr, notes_, settings_);
    driver_->setFrameRenderingCompleteBlock([state = state_](int64_t frames) {
        const std::lock_guard lock(state->mutex);
        state->frames = frames;
        state->signal.notify_all();
    });
    const auto complete = [state = state_, player = audioPlayer_] {
        int64_t frames = 0;
        {
            const std::lock_guard lock(state->mutex);
            state->isComplete = true;
            frames = state->frames;
            state->signal.notify_all();
        }
        player->setTotalFrames(frames);
    };
    player_ = QVMediaManage::initWithRenderManager(driver_, false);
    player_->setIsRec(true);
    player_->setOnSceneGroupRenderingCompleteBlock(complete);
    // Whatever ends it: the run that is seen tells what is wrong.
    player_->setOnSceneGroupRenderingFailedBlock([complete](const platform::Error&) { complete(); });
    player_->loadSceneGroup(group_);
}

void SoundScore::cancel() {
    const std::lock_guard lock(state_->mutex);
    state_->isComplete = true;
    state_->signal.notify_all();
}

void SoundScore::waitUntilKnown(int64_t frame, double seconds) {
    std::unique_lock lock(state_->mutex);
    state_->signal.wait_for(lock, std::chrono::duration<double>(seconds),
                            [&] { return state_->isComplete || state_->frames > frame; });
}

bool SoundScore::isComplete() const {
    const std::lock_guard lock(state_->mutex);
    return state_->isComplete;
}

}  // namespace multiscene
