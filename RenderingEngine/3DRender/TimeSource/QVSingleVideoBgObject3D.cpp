#include "TimeSource/QVSingleVideoBgObject3D.h"

#include "TimeSource/TimeSourceKeys.h"

namespace multiscene {

static constexpr Key singleVideoKeyList[] = {
    {.name = "VideoInfo",
     .type = KeyType::Dictionary,
     .meaning = "the video",
     .required = true,
     .children = &videoInfoKeys},
};
const KeyTable singleVideoKeys{"QVSingleVideoTimeSource", "A background video that clocks the scene.",
                               &quadKeys, singleVideoKeyList};

static const TimeSourceTypes::Registration registered(
    "QVSingleVideoTimeSource",
    [](const platform::Value& info, const TimeSourceContext& context) -> std::shared_ptr<VideoTimeSource> {
        auto source = std::make_shared<QVSingleVideoBgObject3D>(context);
        source->setScene(context.scene);
        source->initWithVideoInfo(info["VideoInfo"]);
        return source;
    },
    singleVideoKeys);

void QVSingleVideoBgObject3D::initWithVideoInfo(const platform::Value& videoInfo) {
    const KeyReader reader(videoInfoKeys, videoInfo);
    initWithMaterVideoURL(videoPath(reader.text("msaterVideoPath")), reader.int32("videoFps"));
}

void QVSingleVideoBgObject3D::initWithMaterVideoURL(const std::string& materVideoURL, int32_t fps) {
    masterVideoPath_ = materVideoURL;
    auto decode = std::make_shared<QVSingleVideoDecode>(
        masterVideoPath_, fps, gate(),
        platform::VideoReaderSettings{.premultipliesAlpha = premultipliesAlpha()});
    decode->onNewFrameReadyAtRenderOutput =
        whileAlive([this](const QVVideoFrameRenderOutput* frame) { masterOutput_ = *frame; });
    report(decode->videoReader());
    setDecode(std::move(decode));
}

void QVSingleVideoBgObject3D::completeDue(const Tick& tick) {
    QVQuadObject3D::completeDue(tick);
    frameCompleted(tick);
}

void QVSingleVideoBgObject3D::addTraceFields(platform::Value::Dictionary& fields) {
    QVQuadObject3D::addTraceFields(fields);
    if (masterOutput_) fields["texture"] = traceOfPicture(masterVideoPath_, *masterOutput_);
}

}  // namespace multiscene
