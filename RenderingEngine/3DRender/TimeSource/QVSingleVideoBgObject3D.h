#pragma once

#include <optional>

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "TimeSource/TimeSourceBase.h"
#include "videoDecode/QVSingleVideoDecode.h"

namespace multiscene {

/// A scene's clock that is a video, drawn as a quad. Stretched to its box whatever the content mode says.
class QVSingleVideoBgObject3D : public QVQuadObject3D, public TimeSourceBase {
  public:
    explicit QVSingleVideoBgObject3D(const TimeSourceContext& context) : TimeSourceBase(context) {}

    /// Opens the video and starts decoding ahead. A video that cannot be read ends the scene after one frame.
    /// Once, right after construction.
    void initWithMaterVideoURL(const std::string& materVideoURL, int32_t fps);
    /// The same with path and rate from "VideoInfo".
    void initWithVideoInfo(const platform::Value& videoInfo);

    const char* className() const override { return "QVSingleVideoTimeSource"; }
    std::shared_ptr<QVObjectContainer3D> node() override { return shared_from_this(); }
    void addTraceFields(platform::Value::Dictionary& fields) override;

    const std::string& masterVideoPath() const { return masterVideoPath_; }
    /// The latest picture; none before the first and after the end.
    const std::optional<QVVideoFrameRenderOutput>& masterOutput() const { return masterOutput_; }

  protected:
    void completeDue(const Tick& tick) override;
    QVObject3DFpsBase& self() override { return *this; }
    void dropPictures() override { masterOutput_.reset(); }
    Texture* drawnTexture() const override {
        return masterOutput_ ? masterOutput_->outputTexture.get() : nullptr;
    }
    bool mayRepeat() const override { return false; }
    /// Colours of a video with alpha come multiplied by it, as those of pictures do.
    virtual bool premultipliesAlpha() const { return true; }

  private:
    std::string masterVideoPath_;
    std::optional<QVVideoFrameRenderOutput> masterOutput_;
};

/// The keys of a video source besides those of its class.
extern const KeyTable singleVideoKeys;

}  // namespace multiscene
