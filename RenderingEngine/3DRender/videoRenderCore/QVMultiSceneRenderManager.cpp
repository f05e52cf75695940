#include "videoRenderCore/QVMultiSceneRenderManager.h"

#include <utility>

#include "platform/base/NotificationCenter.h"
#include "videoDecode/QVVideoDecodeBase.h"
#include "videoRenderCore/AUSAudioPlayer.h"
#include "videoRenderCore/QVMorrow3DGLVIew.h"
#include "videoRenderCore/QVVideoCVCacheExporter.h"

namespace multiscene {

namespace {

/// The group frame at which a window of `length` frames ends that starts at `start`.
int64_t windowEnd(int64_t start, int64_t length) {
    int64_t end = 0;
    return __builtin_add_overflow(start, length, &end) ? INT64_MAX : end;
}

}  // namespace

std::shared_ptr<QVMultiSceneRenderManager> QVMultiSceneRenderManager::initWithFrameSink(
    std::shared_ptr<Playback> playback, std::shared_ptr<FrameSink> frameSink,
    std::shared_ptr<SoundSink> soundSink, const RenderDriverSettings& settings) {
    std::shared_ptr<QVMultiSceneRenderManager> manager(
        new QVMultiSceneRenderManager(std::move(playback), std::move(frameSink), std::move(soundSink),
                                      settings),
        release);
    manager->performOnRenderQueue([&] { manager->setupScene(); });
    return manager;
}

std::shared_ptr<QVMultiSceneRenderManager> QVMultiSceneRenderManager::initWithMorrow3DGLVIew(
    std::shared_ptr<Playback> playback, const std::shared_ptr<QVMorrow3DGLVIew>& view,
    const std::shared_ptr<QVVideoCVCacheExporter>& videoExport, const RenderDriverSettings& settings) {
    if (videoExport) return initWithFrameSink(std::move(playback), videoExport, videoExport, settings);
    const auto audioPlayer = std::make_shared<AUSAudioPlayer>(playback, settings.framesPerSecond);
    auto manager = initWithFrameSink(std::move(playback), view, audioPlayer, settings);
    manager->audioPlayer_ = audioPlayer;
    return manager;
}

/// A clock may hold the last reference for a moment, on the queue that the destructor joins.
void QVMultiSceneRenderManager::release(QVMultiSceneRenderManager* manager) {
    manager->loop_.interrupt();
    if (manager->loop_.queue().isCurrent())
        platform::DispatchQueue::main().async([manager] { delete manager; });
    else
        delete manager;
}

QVMultiSceneRenderManager::QVMultiSceneRenderManager(std::shared_ptr<Playback> playback,
                                                     std::shared_ptr<FrameSink> frameSink,
                                                     std::shared_ptr<SoundSink> soundSink,
                                                     const RenderDriverSettings& settings)
    : playback_(std::move(playback)),
      settings_(settings),
      frameSink_(std::move(frameSink)),
      soundSink_(std::move(soundSink)) {
    if (!frameSink_) return;
    settings_.bufferWidth = frameSink_->width();
    settings_.bufferHeight = frameSink_->height();
}

QVMultiSceneRenderManager::~QVMultiSceneRenderManager() {
    loop_.queue().sync([this] {
        takeDown();
        painter_.reset();
        platform::GLContext::clearCurrent();
    });
}

void QVMultiSceneRenderManager::setupScene() { slots_.current = QVScene3D::initRenderManager(*this); }

void QVMultiSceneRenderManager::resetCurrentRenderFps() {
    if (isInFrame_)
        isResetAsked_ = true;
    else
        currentRenderFps_ = 0;
}

void QVMultiSceneRenderManager::renewFrameSink() {
    if (!frameSink_) return;
    std::shared_ptr<FrameSink> fresh = frameSink_->freshSink();
    if (!fresh) return;
    const std::lock_guard lock(sinksMutex_);
    frameSink_ = fresh;
    if (auto sound = std::dynamic_pointer_cast<SoundSink>(fresh)) soundSink_ = std::move(sound);
}

// Control

void QVMultiSceneRenderManager::stratRun() {
    loop_.start();
    const std::lock_guard lock(sinksMutex_);
    if (soundSink_) soundSink_->resumeAudio();
}

void QVMultiSceneRenderManager::stratRun(uint64_t run) {
    loop_.start(run);
    const std::lock_guard lock(sinksMutex_);
    if (soundSink_) soundSink_->resumeAudio();
}

void QVMultiSceneRenderManager::pauseRun() {
    loop_.pause();
    const std::lock_guard lock(sinksMutex_);
    if (soundSink_) soundSink_->pauseAudio();
}

void QVMultiSceneRenderManager::continueRun() {
    platform::NotificationCenter::shared().post(kRefushMultiSceneRenderStartTime);
    loop_.resume();
    const std::lock_guard lock(sinksMutex_);
    if (soundSink_) soundSink_->resumeAudio();
}

// What a run does

void QVMultiSceneRenderManager::prepare() {
    if (!painter_) painter_ = makePainter(settings_.renderer, playback_->gate(), settings_.makeContext);
    painter_->makeCurrent();
}

void QVMultiSceneRenderManager::takeTurn(uint64_t run) {
    if (!frameSinkIsReady()) return;
    requirePlayable();
    render();
    if (frameSink_ && frameSink_->isExport()) loop_.rest(run, exportPauseSeconds_);
}

void QVMultiSceneRenderManager::interruptTurn() {
    const std::lock_guard lock(sinksMutex_);
    if (frameSink_) frameSink_->wake();
}

bool QVMultiSceneRenderManager::frameSinkIsReady() {
    if (!frameSink_ || frameSink_->isOkCaptureScreenVideo()) return true;
    const StageTimer timer(statistics_.wait);
    if (frameSink_->waitUntilOk()) return true;
    if (const auto failure = frameSink_->failure()) throw platform::Error(*failure);
    return false;
}

/// Ends a run that would go on for ever, or that reads what it must not.
void QVMultiSceneRenderManager::requirePlayable() const {
    for (const auto& refusal : playback_->gate().refusals())
        throw platform::Error(platform::ErrorKind::Template, platform::describe(refusal.verdict),
                              refusal.path);
    slots_.requireRunningClock();
}

void QVMultiSceneRenderManager::render() {
    prepare();
    isInFrame_ = true;
    composer_.render(currentRenderFps_, *painter_, frameSink_.get());
    isInFrame_ = false;
    ++currentRenderFps_;
    ++statistics_.frames;
    if (frameRenderingCompleteBlock_) frameRenderingCompleteBlock_(currentRenderFps_);
    if (std::exchange(isResetAsked_, false)) currentRenderFps_ = 0;
}

void QVMultiSceneRenderManager::startOver() {
    slots_.clear();
    isInFrame_ = isResetAsked_ = false;
    currentRenderFps_ = 0;
}

void QVMultiSceneRenderManager::takeDown() {
    if (!painter_) return;
    // Without its context nothing can be deleted, and the context takes everything with it.
    errorOf([this] {
        prepare();
        slots_.clear();
        painter_->release();
    });
    isInFrame_ = isResetAsked_ = false;  // a failed frame leaves them set
    platform::GLContext::clearCurrent();
}

void QVMultiSceneRenderManager::runFailed(const platform::Error& error) {
    if (runFailedBlock_) runFailedBlock_(error);
}

// Sound

void QVMultiSceneRenderManager::startSoundEffect(const platform::Value& audioInfo) {
    if (!soundSink_) return;
    const int64_t start = currentRenderFps_;
    const int64_t length = audioInfo.integer("fpsEnd") - audioInfo.integer("fpsStart");
    soundSink_->addAudioTrackWithInfo(
        audioInfo.with("fpsStart", start).with("fpsEnd", windowEnd(start, length)));
}

void QVMultiSceneRenderManager::stopSoundEffect(const std::string& audioKey) {
    if (soundSink_) soundSink_->deleteChannelWithKey(audioKey, false);
}

}  // namespace multiscene
