#pragma once

#include "videoDecode/QVVideoDecodeBase.h"
#include "videoDecode/QVVideoReader.h"

namespace multiscene {

/// A colour video and its mask, advancing together; the shorter one ends both. Frame times are the colour
/// video's. Colours are never multiplied by alpha: the mask's shader wants them as they are.
class QVTwoVideoDecode : public QVVideoDecodeBase {
  public:
    /// Opens both files and starts decoding ahead.
    QVTwoVideoDecode(const std::string& masterVideoUrl, const std::string& maskVideoUrl, int32_t videoFps,
                     platform::FileGate& gate);

    /// The pictures of a frame: colour, mask. Must not keep the owner of the decoder alive.
    std::function<void(const QVVideoFrameRenderOutput& master, const QVVideoFrameRenderOutput& mask)>
        onNewTwoFrameReadyAtRenderOutput;

    void cancelDecode() override;
    std::vector<const QVVideoReader*> readers() const override {
        return {&msterVideoReader_, &maskVideoReader_};
    }

    const QVVideoReader& msterVideoReader() const { return msterVideoReader_; }
    const QVVideoReader& maskVideoReader() const { return maskVideoReader_; }

  protected:
    bool readFrame() override;
    platform::CMTime frameTime() const override { return msterFrameOutput_.frameTime; }
    void deliverFrame() override;

  private:
    QVVideoReader msterVideoReader_, maskVideoReader_;
    QVVideoFrameRenderOutput msterFrameOutput_, maskFrameOutput_;
};

}  // namespace multiscene
