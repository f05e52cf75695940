#include "platform/media/VideoInfo.h"

#include "platform/media/VideoDecoder.h"

extern "C" {
#include <libavutil/mathematics.h>
}

namespace platform {

int64_t VideoInfo::durationTicks() const {
    if (duration.timescale <= 0) return 0;
    return av_rescale_rnd(duration.value, 600, duration.timescale, AV_ROUND_DOWN);
}

VideoInfo probeVideo(const FileHandle& file, const std::string& name, ErrorKind kind) {
    return VideoDecoder(file, name, kind).info();
}

}  // namespace platform
