#pragma once

#include <memory>
#include <optional>
#include <string>

#include "core/GLESUtils/Texture.h"
#include "platform/base/FileGate.h"
#include "platform/media/VideoReader.h"
#include "videoDecode/QVVideoFrameRenderOutput.h"

namespace multiscene {

/// Reads one video picture by picture into one texture. Decoding runs ahead on a thread of its own;
/// everything here is called on the render queue. A file that is missing, refused or unreadable gives no
/// pictures.
class QVVideoReader {
  public:
    /// `videoFps`: the frames a second in which frame times are expressed.
    QVVideoReader(std::string url, int32_t videoFps, platform::FileGate& gate,
                  const platform::VideoReaderSettings& settings = {});
    ~QVVideoReader() { destroyFrameBuffer(); }

    void startProcessing();
    void cancelProcessing();
    /// The next picture; none when the video has ended or cannot be read. Throws Error(Transient) when the
    /// disk fails.
    std::optional<QVVideoFrameRenderOutput> renderNextFrame();
    // The two halves of it, for readers that advance together.
    std::optional<platform::VideoFrame> takeNextFrame();
    QVVideoFrameRenderOutput show(const platform::VideoFrame& frame);
    /// Gives the last picture up; may run twice.
    void destroyFrameBuffer() {
        texture_->clear();
        shown_.reset();
    }

    /// The frame number of a time stamp, truncated towards zero in double precision: at a rate other than the
    /// file's own, numbers repeat or are left out.
    static platform::CMTime frameTimeOf(const platform::CMTime& timeStamp, int32_t videoFps);

    const std::string& url() const { return url_; }
    int32_t videoFps() const { return videoFps_; }
    /// The file could be opened.
    bool isReadable() const { return reader_ != nullptr; }
    /// What was damaged, once there is no further picture; empty: nothing.
    const std::string& damage() const { return damage_; }
    double videoWidth() const;   ///< pixels, upright; 0 when unreadable
    double videoHeight() const;  ///< pixels, upright; 0 when unreadable
    /// Pictures may be transparent in places; their colours are multiplied by alpha unless the settings say
    /// otherwise.
    bool hasAlpha() const { return reader_ && reader_->info().hasAlpha; }
    bool hasSound() const { return reader_ && reader_->info().hasAudio; }
    /// The file's own average rate; 0 when unknown.
    double sourceFrameRate() const;
    /// The file has a rate of its own that is not videoFps.
    bool hasOtherFrameRate() const;

  private:
    void setup(platform::FileGate& gate, const platform::VideoReaderSettings& settings);

    std::string url_;
    int32_t videoFps_;
    std::unique_ptr<platform::VideoReader> reader_;
    std::string damage_;
    bool premultipliesAlpha_;
    std::shared_ptr<Texture> texture_ = std::make_shared<Texture>();
    std::shared_ptr<const platform::FilmPicture> shown_;  ///< what the texture holds
};

}  // namespace multiscene
