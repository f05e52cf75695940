#include "videoDecode/QVSingleVideoDecode.h"

namespace multiscene {

QVSingleVideoDecode::QVSingleVideoDecode(const std::string& videoUrl, int32_t videoFps,
                                         platform::FileGate& gate,
                                         const platform::VideoReaderSettings& settings)
    : videoReader_(videoUrl, videoFps, gate, settings) {
    videoReader_.startProcessing();
}

bool QVSingleVideoDecode::readFrame() {
    const auto frame = videoReader_.renderNextFrame();
    if (frame) frameOutput_ = frame;
    return frame.has_value();
}

void QVSingleVideoDecode::deliverFrame() {
    if (onNewFrameReadyAtRenderOutput) onNewFrameReadyAtRenderOutput(&*frameOutput_);
}

void QVSingleVideoDecode::cancelDecode() {
    videoReader_.cancelProcessing();
    videoReader_.destroyFrameBuffer();
}

}  // namespace multiscene
