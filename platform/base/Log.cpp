#include "platform/base/Log.h"

#include <atomic>
#include <cstdio>

namespace platform::log {

namespace {
std::atomic<bool> verboseFlag{false};
}

void setVerbose(bool verbose) { verboseFlag = verbose; }
bool isVerbose() { return verboseFlag; }

void info(const std::string& line) {
    if (isVerbose()) std::fprintf(stderr, "multiscene: %s\n", line.c_str());
}

}  // namespace platform::log
