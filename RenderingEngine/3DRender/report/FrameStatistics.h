// Where the time of rendering goes.
#pragma once

#include <cstdint>

namespace multiscene {

/// Time spent in one stage of all frames so far, in seconds. CPU time is the render thread's own: other
/// threads that paint, those of a software GL driver and of the decoders come on top.
struct StageTime {
    double cpuSeconds = 0;
    double wallSeconds = 0;
};

struct FrameStatistics {
    int64_t frames = 0;       ///< rendered
    int64_t drawnFrames = 0;  ///< of them drawn
    StageTime decode;         ///< fetching video frames
    StageTime update;         ///< key frames, materials, tweens and matrices
    StageTime draw;           ///< asking the nodes what is drawn, painting targets; GL begins here
    StageTime paint;          ///< painting it, or waiting for GL and reading the picture back
    StageTime handOver;       ///< to the encoder
    StageTime complete;       ///< closing the frame, scene changes included
    StageTime wait;           ///< for the encoder
};

/// Adds the time of its scope to a stage.
class StageTimer {
  public:
    explicit StageTimer(StageTime& stage);
    ~StageTimer();
    StageTimer(const StageTimer&) = delete;
    StageTimer& operator=(const StageTimer&) = delete;

  private:
    StageTime& stage_;
    double cpuStart_, wallStart_;
};

}  // namespace multiscene
