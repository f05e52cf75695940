#include "videoDecode/QVTwoVideoDecode.h"

namespace multiscene {

QVTwoVideoDecode::QVTwoVideoDecode(const std::string& masterVideoUrl, const std::string& maskVideoUrl,
                                   int32_t videoFps, platform::FileGate& gate)
    : msterVideoReader_(masterVideoUrl, videoFps, gate, {.premultipliesAlpha = false}),
      maskVideoReader_(maskVideoUrl, videoFps, gate, {.premultipliesAlpha = false}) {
    msterVideoReader_.startProcessing();
    maskVideoReader_.startProcessing();
}

bool QVTwoVideoDecode::readFrame() {
    // Neither texture changes unless both do: at the end the last pair is held.
    const auto master = msterVideoReader_.takeNextFrame();
    const auto mask = maskVideoReader_.takeNextFrame();
    if (!master || !mask) return false;
    msterFrameOutput_ = msterVideoReader_.show(*master);
    maskFrameOutput_ = maskVideoReader_.show(*mask);
    return true;
}

void QVTwoVideoDecode::deliverFrame() {
    if (onNewTwoFrameReadyAtRenderOutput)
        onNewTwoFrameReadyAtRenderOutput(msterFrameOutput_, maskFrameOutput_);
}

void QVTwoVideoDecode::cancelDecode() {
    for (QVVideoReader* reader : {&msterVideoReader_, &maskVideoReader_}) {
        reader->cancelProcessing();
        reader->destroyFrameBuffer();
    }
}

}  // namespace multiscene
