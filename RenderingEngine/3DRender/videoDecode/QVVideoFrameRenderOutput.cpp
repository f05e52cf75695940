#include "videoDecode/QVVideoFrameRenderOutput.h"

namespace multiscene {

std::string QVVideoFrameRenderOutput::description() const {
    return "<QVVideoFrameRenderOutput: self.outputTexture=" + std::to_string(outputTexture) +
           ", self.frameTime.value={" + std::to_string(frameTime.value) + "/" +
           std::to_string(frameTime.timescale) + "}>";
}

}  // namespace multiscene
