#include "report/FrameStatistics.h"

#include "platform/base/Clock.h"

namespace multiscene {

StageTimer::StageTimer(StageTime& stage)
    : stage_(stage), cpuStart_(platform::threadCpuSeconds()), wallStart_(platform::monotonicSeconds()) {}

StageTimer::~StageTimer() {
    stage_.cpuSeconds += platform::threadCpuSeconds() - cpuStart_;
    stage_.wallSeconds += platform::monotonicSeconds() - wallStart_;
}

}  // namespace multiscene
