#include "TimeSource/QVMaskVideoBgObject3D.h"

#include "TimeSource/TimeSourceKeys.h"

namespace multiscene {

static constexpr Key maskVideoKeyList[] = {
    {.name = "VideoInfo",
     .type = KeyType::Dictionary,
     .meaning = "the two videos",
     .required = true,
     .children = &maskVideoInfoKeys},
};
constexpr KeyTable maskVideoKeys{"QVMaskVideoTimeSource",
                                 "A background video with a second video as its opacity.", &quadKeys,
                                 maskVideoKeyList};

static const TimeSourceTypes::Registration registered(
    "QVMaskVideoTimeSource",
    [](const platform::Value& info, const TimeSourceContext& context) -> std::shared_ptr<VideoTimeSource> {
        auto source = std::make_shared<QVMaskVideoBgObject3D>(context);
        source->setScene(context.scene);
        source->initWithVideoInfo(info["VideoInfo"]);
        return source;
    },
    maskVideoKeys);

void QVMaskVideoBgObject3D::initWithVideoInfo(const platform::Value& videoInfo) {
    const KeyReader reader(maskVideoInfoKeys, videoInfo);
    initWithMaterVideoURL(videoPath(reader.text("msaterVideoPath")), videoPath(reader.text("maskVideoPath")),
                          reader.int32("videoFps"));
}

void QVMaskVideoBgObject3D::initWithMaterVideoURL(const std::string& materVideoURL,
                                                  const std::string& maskVideoUrl, int32_t fps) {
    masterVideoPath_ = materVideoURL;
    maskVideoPath_ = maskVideoUrl;
    auto decode = std::make_shared<QVTwoVideoDecode>(masterVideoPath_, maskVideoPath_, fps, gate());
    decode->onNewTwoFrameReadyAtRenderOutput =
        whileAlive([this](const QVVideoFrameRenderOutput& master, const QVVideoFrameRenderOutput& mask) {
            masterOutput_ = master;
            maskOutput_ = mask;
        });
    report(decode->msterVideoReader());
    report(decode->maskVideoReader());
    setDecode(std::move(decode));
}

void QVMaskVideoBgObject3D::dropPictures() {
    masterOutput_.reset();
    maskOutput_.reset();
}

/// The mask lies on the colour picture and moves with it.
Look QVMaskVideoBgObject3D::look() const {
    MaskLook look{.mask = maskOutput_ ? maskOutput_->outputTexture.get() : nullptr, .countsAlpha = false};
    const auto& given = masterTextureCoordinates();
    for (size_t i = 0; i < given.size(); i += 2) {
        const glm::vec4 moved = textureMatrix() * glm::vec4(given[i], given[i + 1], 0, 1);
        look.maskCoordinates[i] = moved.x;
        look.maskCoordinates[i + 1] = moved.y;
    }
    return look;
}

void QVMaskVideoBgObject3D::completeDue(const Tick& tick) {
    QVQuadObject3D::completeDue(tick);
    frameCompleted(tick);
}

void QVMaskVideoBgObject3D::addTraceFields(platform::Value::Dictionary& fields) {
    QVQuadObject3D::addTraceFields(fields);
    if (masterOutput_) fields["texture"] = traceOfPicture(masterVideoPath_, *masterOutput_);
}

}  // namespace multiscene
