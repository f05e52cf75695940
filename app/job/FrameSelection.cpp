#include "app/job/FrameSelection.h"

#include <string>

#include "platform/base/Error.h"

namespace multiscene {

void FrameSelection::requireWithin(int64_t frames) const {
    if (at.empty() || *at.rbegin() < frames) return;
    throw platform::Error(platform::ErrorKind::Usage,
                          "frame " + std::to_string(*at.rbegin()) + " is beyond the end; the last frame is " +
                              std::to_string(frames - 1),
                          "", "--at");
}

}  // namespace multiscene
