#include "videoRenderCore/QVVideoCVCacheExporter.h"

#include <cmath>
#include <future>

#include "output/ExportSound.h"
#include "platform/base/Activity.h"
#include "platform/base/Paths.h"
#include "platform/media/Join.h"

namespace multiscene {

namespace {

constexpr int64_t ticksPerSecond = 600, shortestMixedFilm = 5;  // ticks
constexpr char stoppedMessage[] = ": the export was stopped (101111)";

bool isFinal(QVVideoCVCacheExporter::State state) { return state > QVVideoCVCacheExporter::State::Finishing; }

}  // namespace

std::shared_ptr<QVVideoCVCacheExporter> QVVideoCVCacheExporter::initWithOutputURL(
    const std::string& path, double width, double height, int32_t frameRate,
    const VideoExportSettings& settings) {
    return std::shared_ptr<QVVideoCVCacheExporter>(
        new QVVideoCVCacheExporter(path, width, height, frameRate, settings));
}

QVVideoCVCacheExporter::QVVideoCVCacheExporter(const std::string& path, double width, double height,
                                               int32_t frameRate, const VideoExportSettings& settings)
    : savePath_(path),
      width_(static_cast<int32_t>(std::lround(width))),
      height_(static_cast<int32_t>(std::lround(height))),
      framesPerSecond_(frameRate),
      settings_(settings),
      placer_(settings.layout.value_or(platform::FrameLayout::whole(width_, height_))),
      writer_(std::make_unique<platform::VideoWriter>(
          platform::VideoWriter::Settings{.path = path,
                                          .width = width_,
                                          .height = height_,
                                          .framesPerSecond = frameRate,
                                          .bitRate = settings.bitRate,
                                          .preset = settings.preset,
                                          .threads = settings.threads,
                                          .optimiseForNetworkUse = true})) {}

QVVideoCVCacheExporter::~QVVideoCVCacheExporter() { canleExport(); }

void QVVideoCVCacheExporter::setDelegate(std::weak_ptr<QVVideoCVCacheExporterDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

QVVideoCVCacheExporter::State QVVideoCVCacheExporter::state() const {
    const std::lock_guard lock(mutex_);
    return state_;
}

std::vector<platform::Value> QVVideoCVCacheExporter::audioTrackArray() const {
    const std::lock_guard lock(mutex_);
    return audioTrackArray_;
}

std::optional<platform::AudioMixReport> QVVideoCVCacheExporter::soundReport() const {
    const std::lock_guard lock(mutex_);
    return soundReport_;
}

void QVVideoCVCacheExporter::addAudioTrackWithInfo(const platform::Value& info) {
    const std::lock_guard lock(mutex_);
    audioTrackArray_.push_back(info);
}

// --- frames --------------------------------------------------------------------------------------------

platform::Canvas QVVideoCVCacheExporter::frameCanvas() {
    const platform::FrameLayout& layout = placer_.layout();
    const ptrdiff_t stride = ptrdiff_t{layout.drawnWidth} * 4;
    buffer_ = writer_->takeBuffer();
    drawn_.resize(layout.isWhole() ? 0 : static_cast<size_t>(stride) * size_t(layout.drawnHeight));
    return {.pixels = layout.isWhole() ? buffer_->data() : drawn_.data(),
            .stride = stride,
            .width = layout.drawnWidth,
            .height = layout.drawnHeight};
}

bool QVVideoCVCacheExporter::isOkCaptureScreenVideo() const {
    return state() == State::Writing && writer_->isReadyForMoreMediaData();
}

bool QVVideoCVCacheExporter::waitUntilOk() {
    if (state() != State::Writing) return false;
    if (writer_->waitUntilReady()) return true;
    if (const auto error = writer_->error()) handleSessionError(*error);
    return false;
}

void QVVideoCVCacheExporter::wake() { writer_->wakeWaiters(); }

std::optional<platform::Error> QVVideoCVCacheExporter::failure() const {
    const std::lock_guard lock(mutex_);
    if (state_ == State::Writing || error_) return error_;
    return platform::Error(platform::ErrorKind::Cancelled, "the export has ended", savePath_);
}

void QVVideoCVCacheExporter::renderFrameToVideo() {
    if (!placer_.layout().isWhole()) placer_.place(drawn_.data(), buffer_->data());
    if (settings_.watcher)
        settings_.watcher(
            currentFrame_ - 1,
            {.pixels = buffer_->data(), .stride = ptrdiff_t{width_} * 4, .width = width_, .height = height_});
    addFrameCVCache(std::move(buffer_));
}

void QVVideoCVCacheExporter::addFrameCVCache(platform::PixelBufferPool::Pointer picture) {
    writer_->append(std::move(picture), currentFrame_);
    ++currentFrame_;
}

std::shared_ptr<FrameSink> QVVideoCVCacheExporter::freshSink() {
    canleExport();
    writer_->finish();  // waits until the file at the path is gone
    auto fresh = initWithOutputURL(savePath_, width_, height_, framesPerSecond_, settings_);
    const std::lock_guard lock(mutex_);
    fresh->delegate_ = delegate_;
    for (const platform::Value& entry : audioTrackArray_)
        if (entry.string("type") == "bgAudio") fresh->audioTrackArray_.push_back(entry);
    return fresh;
}

// --- the end -------------------------------------------------------------------------------------------

bool QVVideoCVCacheExporter::moveTo(State next) {
    const std::lock_guard lock(mutex_);
    if (isFinal(state_) || state_ >= next) return false;
    state_ = next;
    return true;
}

void QVVideoCVCacheExporter::finishExport() {
    if (moveTo(State::Finishing)) finishing_.async([this] { complete(); });
}

void QVVideoCVCacheExporter::giveUp() {
    stop_.request_stop();
    writer_->cancel();
}

void QVVideoCVCacheExporter::stopExport() {
    handleSessionError(platform::Error(platform::ErrorKind::Failed, settings_.errorDomain + stoppedMessage));
}

void QVVideoCVCacheExporter::canleExport() {
    if (moveTo(State::Cancelled)) giveUp();
}

void QVVideoCVCacheExporter::complete() {
    try {
        platform::activity::stage("encoding the last frames");
        // The sound is mixed while the encoder ends with the frames that it has looked ahead at.
        auto mixing =
            std::async(std::launch::async, [this] { return mutableAudioCompositionWithVideoUrl(); });
        if (writer_->finish() != platform::VideoWriter::State::Completed) {
            if (const auto error = writer_->error()) handleSessionError(*error);
            return;
        }
        const std::optional<std::filesystem::path> sound = mixing.get();
        if (!sound)
            moveTo(State::SilentOnly);
        else if (sound->empty())
            handleSessionCompleteWithVideoPath(savePath_);
        else
            synthesisAudio(*sound);
    } catch (const platform::Error& error) {
        handleSessionError(error);
    } catch (const std::exception& error) {
        handleSessionError(platform::Error(platform::ErrorKind::Transient, error.what(), savePath_));
    }
}

/// The film lasts from 0 to the end of its last frame, which is stamped one less than the next would be.
std::optional<std::filesystem::path> QVVideoCVCacheExporter::mutableAudioCompositionWithVideoUrl() {
    const auto entries = audioTrackArray();
    if (entries.empty()) return std::filesystem::path();
    if (currentFrame_ * ticksPerSecond / framesPerSecond_ < shortestMixedFilm) return std::nullopt;
    const auto totalTime = static_cast<float>(static_cast<double>(currentFrame_) / framesPerSecond_);
    const platform::AudioTimeline timeline =
        ExportSound::timelineOf(entries, framesPerSecond_, totalTime, *settings_.playback);
    if (timeline.tracks.empty()) return std::filesystem::path();
    platform::activity::stage("mixing the sound", platform::ErrorKind::Template);
    // An M4A file whose name ends in .m4v.
    const std::filesystem::path mix = temporaryFile(".m4v");
    const platform::AudioMixReport report = platform::writeAudioMix(
        timeline, mix, {.bitRate = settings_.audioBitRate, .loudness = settings_.loudness},
        stop_.get_token());
    {
        const std::lock_guard lock(mutex_);
        soundReport_ = report;
    }
    return mix;
}

void QVVideoCVCacheExporter::synthesisAudio(const std::filesystem::path& audio) {
    const std::filesystem::path joined = temporaryFile(".mp4");
    platform::activity::stage("joining picture and sound");
    platform::joinVideoAndAudio(savePath_, audio, joined, stop_.get_token());
    handleSessionCompleteWithVideoPath(joined.string());
}

std::filesystem::path QVVideoCVCacheExporter::temporaryFile(const char* extension) const {
    return settings_.temporaryFolder / (platform::uniqueIdentifier() + extension);
}

void QVVideoCVCacheExporter::handleSessionCompleteWithVideoPath(const std::string& path) {
    if (!moveTo(State::Completed)) return;
    tellDelegate([path, this](auto& delegate) { delegate.videoExporterFinished(*this, path); });
}

void QVVideoCVCacheExporter::handleSessionError(const platform::Error& error) {
    {
        const std::lock_guard lock(mutex_);
        if (isFinal(state_)) return;
        state_ = State::Failed;
        error_ = error;
    }
    giveUp();
    tellDelegate([error, this](auto& delegate) { delegate.videoExporter(*this, error); });
}

/// `call` refers to this exporter, which is kept alive for it.
void QVVideoCVCacheExporter::tellDelegate(std::function<void(QVVideoCVCacheExporterDelegate&)> call) {
    platform::DispatchQueue::main().async([weak = weak_from_this(), call = std::move(call)] {
        const auto self = weak.lock();
        if (!self) return;
        std::shared_ptr<QVVideoCVCacheExporterDelegate> delegate;
        {
            const std::lock_guard lock(self->mutex_);
            delegate = self->delegate_.lock();
        }
        if (delegate) call(*delegate);
    });
}

}  // namespace multiscene
