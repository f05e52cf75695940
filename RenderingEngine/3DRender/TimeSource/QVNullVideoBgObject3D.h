#pragma once

#include "TimeSource/TimeSourceBase.h"

namespace multiscene {

/// A scene's clock without a video: counts frames, draws nothing.
class QVNullVideoBgObject3D : public QVObject3DFpsBase, public TimeSourceBase {
  public:
    explicit QVNullVideoBgObject3D(const TimeSourceContext& context) : TimeSourceBase(context) {}

    /// `materWithFps`: frames a second; `totalFps`: the number of the last frame where the node has no end.
    /// Once, right after construction.
    void initWithMaterWithFps(int32_t materWithFps, int32_t totalFps);

    const char* className() const override { return "QVNullVideoTimeSource"; }
    std::shared_ptr<QVObjectContainer3D> node() override { return shared_from_this(); }
    void computeTimeSourceFpsTotal() override;

  protected:
    bool isCompletedAt(int64_t frame) const override { return visible() && isDueAt(frame); }
    void completeDue(const Tick& tick) override;
    QVObject3DFpsBase& self() override { return *this; }
};

}  // namespace multiscene
