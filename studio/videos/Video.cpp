#include "studio/videos/Video.h"

#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;

Value valueOf(const Video& video) {
    const std::string address = "/api/v1/videos/" + video.id;
    return Value::Dictionary{
        {"id", video.id},
        {"title", video.title},
        {"job", video.job},
        {"template", Value::Dictionary{{"id", video.templateId}, {"title", video.templateTitle}}},
        {"bytes", video.bytes},
        {"width", video.width},
        {"height", video.height},
        {"seconds", video.seconds},
        {"frames", video.frames},
        {"hasSound", video.hasSound},
        {"kept", video.isKept},
        {"created", timeText(video.created)},
        {"expires", video.expires > 0 && !video.isKept ? Value(timeText(video.expires)) : Value()},
        {"file", address + "/file"},
        {"poster", address + "/poster.jpg"}};
}

}  // namespace multiscene::studio
