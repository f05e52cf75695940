#pragma once

#include <optional>

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "core/Material/PictureSequence.h"

namespace multiscene {

/// A quad that shows numbered PVR pictures. A picture that is missing leaves its frames without a texture,
/// unlike a sequence material, which holds the last one.
class QVPvrTextureSerialQuadObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVPvrTextureSerialQuadObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    void updateDue(const Tick& tick) override;

  private:
    std::optional<PictureSequence> sequence_;
    std::string shownName_;
};

}  // namespace multiscene
