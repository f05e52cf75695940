#pragma once

#include "videoDecode/QVVideoDecodeBase.h"

namespace multiscene {

/// A clock without a video: counts frames.
class QVNullVideoDecode : public QVVideoDecodeBase {
  public:
    /// `timeFps`: frames a second.
    QVNullVideoDecode(int32_t timeFps, int32_t fpsTotal) : timeFps_(timeFps) { setFpsTotal(fpsTotal); }

    int32_t timeFps() const { return timeFps_; }

  protected:
    bool readFrame() override { return true; }
    platform::CMTime frameTime() const override { return platform::CMTimeMake(currentFps(), timeFps_); }
    void deliverFrame() override {
        if (onNewFrameReadyAtRenderOutput) onNewFrameReadyAtRenderOutput(nullptr);
    }

  private:
    int32_t timeFps_;
};

}  // namespace multiscene
