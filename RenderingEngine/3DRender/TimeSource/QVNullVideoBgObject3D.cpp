#include "TimeSource/QVNullVideoBgObject3D.h"

#include "videoDecode/QVNullVideoDecode.h"

namespace multiscene {

static constexpr Key nullVideoInfoKeyList[] = {
    {.name = "videoFps",
     .type = KeyType::Integer,
     .unit = "frames a second",
     .fallback = "0",
     .meaning = "rate of the clock, which preview keeps",
     .required = true,
     .minimum = 1,
     .maximum = 240},
    {.name = "fpsTotal",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "number of the last frame where \"FpsInfo\" names no \"endFps\"",
     .minimum = 0},
};
constexpr KeyTable nullVideoInfoKeys{"NullVideoInfo", "The frame clock of a scene without a video.", nullptr,
                                     nullVideoInfoKeyList};

static constexpr Key nullVideoKeyList[] = {
    {.name = "NullVideoInfo",
     .type = KeyType::Dictionary,
     .meaning = "the clock",
     .required = true,
     .children = &nullVideoInfoKeys},
};
constexpr KeyTable nullVideoKeys{"QVNullVideoTimeSource", "A frame clock without a video.", &fpsBaseKeys,
                                 nullVideoKeyList};

static const TimeSourceTypes::Registration registered(
    "QVNullVideoTimeSource",
    [](const platform::Value& info, const TimeSourceContext& context) -> std::shared_ptr<VideoTimeSource> {
        const KeyReader reader(nullVideoInfoKeys, info["NullVideoInfo"]);
        auto source = std::make_shared<QVNullVideoBgObject3D>(context);
        source->initWithMaterWithFps(reader.int32("videoFps"), reader.int32("fpsTotal"));
        return source;
    },
    nullVideoKeys);

void QVNullVideoBgObject3D::initWithMaterWithFps(int32_t materWithFps, int32_t totalFps) {
    setDecode(std::make_shared<QVNullVideoDecode>(materWithFps, totalFps));
}

void QVNullVideoBgObject3D::computeTimeSourceFpsTotal() {
    if (endFps() != INT64_MAX) TimeSourceBase::computeTimeSourceFpsTotal();
}

void QVNullVideoBgObject3D::completeDue(const Tick& tick) {
    QVObject3DFpsBase::completeDue(tick);
    frameCompleted(tick);
}

}  // namespace multiscene
