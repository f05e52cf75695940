#pragma once

#include "videoDecode/QVVideoDecodeBase.h"
#include "videoDecode/QVVideoReader.h"

namespace multiscene {

/// One video, one picture a frame.
class QVSingleVideoDecode : public QVVideoDecodeBase {
  public:
    /// Opens the file and starts decoding ahead.
    QVSingleVideoDecode(const std::string& videoUrl, int32_t videoFps, platform::FileGate& gate,
                        const platform::VideoReaderSettings& settings = {});

    void cancelDecode() override;
    std::vector<const QVVideoReader*> readers() const override { return {&videoReader_}; }

    const QVVideoReader& videoReader() const { return videoReader_; }
    /// The latest picture; none before the first.
    const std::optional<QVVideoFrameRenderOutput>& frameOutput() const { return frameOutput_; }

  protected:
    bool readFrame() override;
    platform::CMTime frameTime() const override { return frameOutput_->frameTime; }
    void deliverFrame() override;

  private:
    QVVideoReader videoReader_;
    std::optional<QVVideoFrameRenderOutput> frameOutput_;
};

}  // namespace multiscene
