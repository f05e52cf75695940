#include "app/preview/HeldPlayer.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <utility>

#include "app/job/MusicEntry.h"
#include "app/job/UserValues.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "platform/image/ImageDecoder.h"
#include "platform/media/VideoReader.h"
#include "trace/SceneTrace.h"

namespace multiscene {

using platform::DispatchQueue;
using platform::Error;

namespace {

constexpr size_t kKeptPictures = size_t{192} << 20, kKeptFilmPictures = size_t{128} << 20;  // bytes

RenderDriverSettings driverSettings(const PreparedGroup& group) {
    RenderDriverSettings settings;
    settings.renderer = group.renderer;
    settings.framesPerSecond = group.format.framesPerSecond;
    return settings;
}

/// Lets the pump of the main queue look at its condition at once.
void wakeMainThread() {
    DispatchQueue::main().async([] {});
}

}  // namespace

/// What the render queue tells; its callbacks may outlive the player.
struct HeldPlayer::Shared {
    std::mutex mutex;
    std::optional<Error> error;
    FrameStatistics statistics;
    std::atomic<bool> isStartingAgain = false;

    void fail(const Error& failure) {
        const std::lock_guard lock(mutex);
        if (!error) error = failure;
    }
};

HeldPlayer::HeldPlayer(const RenderRequest& request, JobObserver& observer, const std::stop_token& stop)
    : group_(prepareGroup(request, job_, observer, stop)),
      musicSettings_(request.musicSettings),
      shared_(std::make_shared<Shared>()),
      view_(std::make_shared<QVMorrow3DGLVIew>(group_.layout)) {
    platform::keepDecodedImages(kKeptPictures);
    platform::keepDecodedFilms(kKeptFilmPictures);
    nodeValues_ = NodeValues(group_.group);
    createDriver();
    createScore();
}

HeldPlayer::~HeldPlayer() {
    view_->rest();
    score_->cancel();
}

void HeldPlayer::createDriver() {
    view_->setOnChange(wakeMainThread);
    driver_ = QVMultiSceneRenderManager::initWithMorrow3DGLVIew(group_.playback, view_, nullptr,
                                                                driverSettings(group_));
    driver_->setFrameRenderingCompleteBlock([shared = shared_, driver = driver_.get()](int64_t) {
        const std::lock_guard lock(shared->mutex);
        shared->statistics = driver->statistics();
    });
    player_ = QVMediaManage::initWithRenderManager(driver_, false);
    // The clocks do not keep pace: the view does.
    player_->setIsRec(true);
    player_->setHoldsAtEnd(true);
    player_->setOnSceneGroupRenderingFailedBlock([shared = shared_](const Error& error) {
        shared->fail(error);
        wakeMainThread();
    });
}

void HeldPlayer::createScore() {
    AUSAudioPlayer::Entries music;
    if (!group_.musicPath.empty()) music.push_back(musicEntry(group_.musicPath, musicSettings_));
    score_ = std::make_shared<SoundScore>(group_, std::move(music), driver_->audioPlayer());
}

int64_t HeldPlayer::frames() const { return view_->frames().value_or(group_.totalFrames); }

int64_t HeldPlayer::position() const {
    const int64_t next = isStarted_ ? view_->nextFrame() : 0;
    return view_->isHolding(next - 1) ? next - 1 : next;
}

FrameStatistics HeldPlayer::statistics() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->statistics;
}

bool HeldPlayer::hasFailed() const {
    const std::lock_guard lock(shared_->mutex);
    return shared_->error.has_value();
}

void HeldPlayer::requireRunning() const {
    const std::lock_guard lock(shared_->mutex);
    if (shared_->error) throw Error(*shared_->error);
}

bool HeldPlayer::isBeyondEnd(int64_t frame) const {
    const auto frames = view_->frames();
    return frames && frame >= *frames;
}

HeldPlayer::Outcome HeldPlayer::show(int64_t frame, const platform::Canvas& picture,
                                     const std::function<bool()>& isGivenUp) {
    requireRunning();
    bool isNoLongerWanted = false;
    do {
        if (isBeyondEnd(frame)) return Outcome::BeyondEnd;
        playTo(frame);
        view_->ask(frame, picture);
        DispatchQueue::main().pumpUntil([&] {
            isNoLongerWanted = isNoLongerWanted || isGivenUp();
            return view_->isShown() || view_->hasPassed() || isBeyondEnd(frame) || hasFailed() ||
                   isNoLongerWanted;
        });
        // What was given up before may have been under way still.
    } while (view_->hasPassed() && !hasFailed() && !isNoLongerWanted);
    if (view_->isShown()) {
        changing_.clear();
        return Outcome::Shown;
    }
    view_->rest();
    requireRunning();
    return isBeyondEnd(frame) ? Outcome::BeyondEnd : Outcome::GivenUp;
}

/// Taken down by whoever holds the frame, who draws it again then.
std::optional<std::string> HeldPlayer::trace(int64_t frame, const platform::Canvas& picture,
                                             const std::function<bool()>& isGivenUp) {
    const bool isThere = changing_.empty() && view_->isHolding(frame) && view_->isShown();
    if (!isThere && show(frame, picture, isGivenUp) != Outcome::Shown) return std::nullopt;
    const auto text = std::make_shared<std::string>();
    view_->change([driver = driver_.get(), text] { *text = platform::jsonText(SceneTrace::frame(*driver)); });
    if (show(frame, picture, isGivenUp) != Outcome::Shown || text->empty()) return std::nullopt;
    return *text;
}

/// Has the loop on its way to a frame.
void HeldPlayer::playTo(int64_t frame) {
    if (!isStarted_) return start();
    if (frame >= view_->nextFrame() || view_->isHolding(frame)) return;
    view_->rest();
    requireTemplate();
    startAgain();
}

/// One that is gone would come out as a film of empty places.
void HeldPlayer::requireTemplate() const {
    const std::filesystem::path& folder = group_.playable.folder;
    if (!platform::isThere(folder))
        throw Error(platform::ErrorKind::Template, "is no longer there", folder.string());
}

void HeldPlayer::start() {
    isStarted_ = true;
    try {
        player_->loadSceneGroup(group_.group);
    } catch (const Error& error) {
        shared_->fail(error);
        throw;
    }
}

/// Returns when frames are counted from 0 again, so that no frame of the run before is taken for one that is
/// asked for afterwards.
void HeldPlayer::startAgain() {
    changing_.clear();
    shared_->isStartingAgain = true;
    player_->reStartRenderwithSceneGroup(group_.group, [shared = shared_] {
        shared->isStartingAgain = false;
        wakeMainThread();
    });
    DispatchQueue::main().pumpUntil([&] { return !shared_->isStartingAgain || hasFailed(); });
}

void HeldPlayer::setInputs(const JobInputs& inputs, const std::stop_token& stop) {
    UserValues values = collectUserValues(inputs, group_.playable, *group_.files, group_.format,
                                          group_.playback->gate(), stop);
    const platform::Value before =
        std::exchange(group_.group.userMediaMap, platform::Value(std::move(values.map)));
    group_.missingInputs = std::move(values.missing);
    const auto changed = nodeValues_.changedKeys(before, group_.group.userMediaMap);
    if (changed) return exchange(*changed);
    if (isStarted_) startAgain();
    score_->cancel();
    createScore();
}

/// What nodes show is heard nowhere.
void HeldPlayer::exchange(std::set<std::string> keys) {
    if (!isStarted_ || keys.empty()) return;
    changing_.merge(keys);
    view_->change([driver = driver_.get(), keys = changing_, values = group_.group.userMediaMap] {
        driver->playback().settings().setUserMediaMapDic(values);
        reloadNodes(*driver, keys);
    });
}

}  // namespace multiscene
