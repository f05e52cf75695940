#pragma once

#include <optional>

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "TimeSource/TimeSourceBase.h"
#include "videoDecode/QVTwoVideoDecode.h"

namespace multiscene {

/// A scene's clock that is a video whose opacity comes from a second one. Stretched to its box.
class QVMaskVideoBgObject3D : public QVQuadObject3D, public TimeSourceBase {
  public:
    explicit QVMaskVideoBgObject3D(const TimeSourceContext& context) : TimeSourceBase(context) {}

    /// Opens both videos and starts decoding ahead. Once, right after construction.
    void initWithMaterVideoURL(const std::string& materVideoURL, const std::string& maskVideoUrl,
                               int32_t fps);

    /// The same with paths and rate from "VideoInfo".
    void initWithVideoInfo(const platform::Value& videoInfo);

    const char* className() const override { return "QVMaskVideoTimeSource"; }
    std::shared_ptr<QVObjectContainer3D> node() override { return shared_from_this(); }
    void addTraceFields(platform::Value::Dictionary& fields) override;

    const std::string& masterVideoPath() const { return masterVideoPath_; }
    const std::string& maskVideoPath() const { return maskVideoPath_; }
    /// The latest pictures; none before the first and after the end.
    const std::optional<QVVideoFrameRenderOutput>& masterOutput() const { return masterOutput_; }

  protected:
    void completeDue(const Tick& tick) override;
    QVObject3DFpsBase& self() override { return *this; }
    void dropPictures() override;
    Texture* drawnTexture() const override {
        return masterOutput_ ? masterOutput_->outputTexture.get() : nullptr;
    }
    bool mayRepeat() const override { return false; }
    Look look() const override;

  private:
    std::string masterVideoPath_, maskVideoPath_;
    std::optional<QVVideoFrameRenderOutput> masterOutput_, maskOutput_;
};

}  // namespace multiscene
