#pragma once

#include <cstdint>

#include "format/TypeRegistry.h"
#include "platform/base/Value.h"
#include "playback/Tick.h"

namespace multiscene {

class QVMultiSceneRenderShareSettings;
class QVObjectContainer3D;

extern const KeyTable componentKeys;

/// A behaviour attached to a node, with a frame range of its own. Owned by its node; render queue only.
class QVObject3DComponentBase {
  public:
    virtual ~QVObject3DComponentBase() = default;

    /// The owner outlives the component.
    void setObject3D(QVObjectContainer3D* object3D) { object3D_ = object3D; }
    QVObjectContainer3D* object3D() const { return object3D_; }

    virtual void rendInfoWithDic(const platform::Value& info);
    virtual void updateData(const Tick&) {}
    virtual void renderComplete(const Tick&) {}

    const platform::Value& componentInfo() const { return componentInfo_; }
    int64_t sartFps() const { return sartFps_; }
    int64_t endFps() const { return endFps_; }

  protected:
    /// The identifier of the owner's scene; empty without one.
    std::string sceneIdentifier() const;
    /// The owner's.
    const QVMultiSceneRenderShareSettings& settings() const;

  private:
    void computeStartAndEndFps(const platform::Value& info);

    QVObjectContainer3D* object3D_ = nullptr;
    platform::Value componentInfo_;
    int64_t sartFps_ = 0, endFps_ = 0;
};

/// Component types by the "type" of their dictionary.
using ComponentTypes = TypeRegistry<QVObject3DComponentBase>;

}  // namespace multiscene
