#include "videoRenderCore/FrameStatistics.h"

#include <time.h>

#include "platform/base/Clock.h"

namespace multiscene {

namespace {

double threadCpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

StageTimer::StageTimer(StageTime& stage)
    : stage_(stage), cpuStart_(threadCpuSeconds()), wallStart_(platform::monotonicSeconds()) {}

StageTimer::~StageTimer() {
    stage_.cpuSeconds += threadCpuSeconds() - cpuStart_;
    stage_.wallSeconds += platform::monotonicSeconds() - wallStart_;
}

}  // namespace multiscene
