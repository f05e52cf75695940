#pragma once

#include <vector>

#include "3DObject/QuadObject3D/QVQuadObject3D.h"

namespace multiscene {

/// A quad whose corners follow a corner-pin track, one entry for each frame that it is drawn, counted from
/// its own first: the track goes on where it stopped, and its last entry is held. Its corners lie in the unit
/// square around the origin, which the node's transform scales and places; box and anchor do not apply.
/// Without a track the quad keeps its fitted box.
class QVQuadTrackObject3D : public QVQuadObject3D {
  public:
    const char* className() const override { return "QVQuadTrackObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void loadTextureFinsh() override;

    /// Reads the track; one that cannot be read leaves the list empty and is noted in the render report.
    void parserTrackDataWithXmlPath(const std::string& trackFilePath);
    /// The corners that one entry of the track gives.
    static Corners computeQuadVerticesWithTrackInfo(const platform::Value& trackInfo);

  protected:
    void updateDue(const Tick& tick) override;
    bool liesInItsBox() const override { return false; }

  private:
    void followTrack(size_t frame);

    std::string trackFilePath_;
    std::vector<Corners> trackData_;
    size_t curretTrackFps_ = 0;  // frames drawn so far
    bool isDisXmlParserOnce_ = false;
};

}  // namespace multiscene
