#include "videoDecode/QVVideoReader.h"

#include <algorithm>
#include <cmath>

namespace multiscene {

namespace {

constexpr double frameRateTolerance = 0.005;  // 29.97 counts as 30

int64_t saturated(double number) {
    constexpr double limit = 9.0e18;
    return static_cast<int64_t>(std::clamp(number, -limit, limit));
}

}  // namespace

QVVideoReader::QVVideoReader(std::string url, int32_t videoFps, platform::FileGate& gate,
                             const platform::VideoReaderSettings& settings)
    : url_(std::move(url)), videoFps_(videoFps), premultipliesAlpha_(settings.premultipliesAlpha) {
    setup(gate, settings);
}

void QVVideoReader::setup(platform::FileGate& gate, const platform::VideoReaderSettings& settings) {
    auto opened = gate.open(url_);
    if (!opened.file) return;
    try {
        reader_ = std::make_unique<platform::VideoReader>(std::move(opened.file), url_,
                                                          platform::ErrorKind::Template, settings);
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        // No pictures then: the source ends after one frame, and its owner reports the file.
    }
}

void QVVideoReader::startProcessing() {
    if (reader_) reader_->start();
}

void QVVideoReader::cancelProcessing() {
    if (reader_) reader_->cancel();
}

platform::CMTime QVVideoReader::frameTimeOf(const platform::CMTime& timeStamp, int32_t videoFps) {
    const double ticksPerFrame = static_cast<double>(timeStamp.timescale) / videoFps;
    const double frame = std::trunc(static_cast<double>(timeStamp.value) / ticksPerFrame);
    return platform::CMTimeMake(std::isfinite(frame) ? saturated(frame) : 0, videoFps);
}

std::optional<QVVideoFrameRenderOutput> QVVideoReader::renderNextFrame() {
    const auto frame = takeNextFrame();
    if (!frame) return std::nullopt;
    return show(*frame);
}

std::optional<platform::VideoFrame> QVVideoReader::takeNextFrame() {
    if (!reader_) return std::nullopt;
    auto frame = reader_->nextFrame();
    if (frame) return frame;
    if (const auto error = reader_->error()) {
        if (error->kind() == platform::ErrorKind::Transient) throw platform::Error(*error);
        damage_ = error->message();
    }
    return std::nullopt;
}

QVVideoFrameRenderOutput QVVideoReader::show(const platform::VideoFrame& frame) {
    if (frame.pixels != shown_) texture_->setFrame(frame.pixels, premultipliesAlpha_ && hasAlpha());
    shown_ = frame.pixels;
    return {.outputTexture = texture_,
            .frameTime = frameTimeOf(frame.time, videoFps_),
            .frameWidth = static_cast<double>(frame.pixels->width()),
            .frameHeight = static_cast<double>(frame.pixels->height())};
}

double QVVideoReader::videoWidth() const { return reader_ ? reader_->info().width : 0; }

double QVVideoReader::videoHeight() const { return reader_ ? reader_->info().height : 0; }

double QVVideoReader::sourceFrameRate() const { return reader_ ? reader_->info().averageFrameRate : 0; }

bool QVVideoReader::hasOtherFrameRate() const {
    const double rate = sourceFrameRate();
    return rate > 0 && std::abs(rate - videoFps_) > frameRateTolerance * rate;
}

}  // namespace multiscene
