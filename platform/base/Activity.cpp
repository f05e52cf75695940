#include "platform/base/Activity.h"

#include <atomic>

#include "platform/base/Clock.h"

namespace platform::activity {

namespace {

constexpr double kInterval = 0.2;  // seconds between signs that are told

Listener& listener() {
    static Listener nobody;
    return nobody;
}

std::atomic<double> lastSign{0};

}  // namespace

void setListener(Listener hearing) { listener() = std::move(hearing); }

void stage(const std::string& stage, ErrorKind blame) {
    if (listener()) listener()(stage, "", blame);
}

void reading(const std::string& file, ErrorKind blame) {
    if (listener()) listener()("", file, blame);
}

void sign() {
    if (!listener()) return;
    const double now = monotonicSeconds();
    if (now - lastSign < kInterval) return;
    lastSign = now;
    listener()("", "", ErrorKind::Failed);
}

}  // namespace platform::activity
