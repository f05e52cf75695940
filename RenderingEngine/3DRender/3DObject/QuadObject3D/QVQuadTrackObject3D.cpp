#include "3DObject/QuadObject3D/QVQuadTrackObject3D.h"

#include <algorithm>

#include "core/SkippedMedia.h"
#include "format/NodeTypes.h"
#include "format/TrackFile.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key trackInfoKeyList[] = {
    {.name = "trackFliePath",
     .type = KeyType::Text,
     .meaning = "the encrypted track",
     .lookup = KeyLookup::Path,
     .required = true,
     .file = KeyFile::Track},
};
constexpr KeyTable trackInfoKeys{"TrackInfo", "The track of a tracked quad.", nullptr, trackInfoKeyList};

static constexpr Key trackKeyList[] = {
    {.name = "TrackInfo",
     .type = KeyType::Dictionary,
     .meaning = "the track",
     .required = true,
     .children = &trackInfoKeys},
};
constexpr KeyTable trackKeys{"QVQuadTrackObject3D", "A quad whose corners follow a track.", &quadKeys,
                             trackKeyList};

QV_REGISTER_NODE_TYPE(QVQuadTrackObject3D, trackKeys);

void QVQuadTrackObject3D::rendInfoWithDic(const platform::Value& info) {
    QVQuadObject3D::rendInfoWithDic(info);
    trackFilePath_ =
        KeyReader(trackInfoKeys, KeyReader(trackKeys, info).value("TrackInfo")).text("trackFliePath");
}

void QVQuadTrackObject3D::parserTrackDataWithXmlPath(const std::string& trackFilePath) {
    if (Playback* const played = playback())
        for (const platform::Value& entry : TrackFile::read(resolvedPath(trackFilePath), played->gate()))
            trackData_.push_back(computeQuadVerticesWithTrackInfo(entry));
    if (trackData_.empty()) reportSkipped(*this, "missing or unreadable track", trackFilePath);
}

void QVQuadTrackObject3D::updateDue(const Tick& tick) {
    QVQuadObject3D::updateDue(tick);
    if (!isDisXmlParserOnce_) {
        isDisXmlParserOnce_ = true;
        parserTrackDataWithXmlPath(trackFilePath_);
    }
    followTrack(curretTrackFps_);
    ++curretTrackFps_;
}

/// A picture that is loaded again lies where the other one did.
void QVQuadTrackObject3D::loadTextureFinsh() {
    QVQuadObject3D::loadTextureFinsh();
    if (curretTrackFps_ > 0) followTrack(curretTrackFps_ - 1);
}

void QVQuadTrackObject3D::followTrack(size_t frame) {
    if (!trackData_.empty()) forceRefushSquareVertices(trackData_[std::min(frame, trackData_.size() - 1)]);
}

QVQuadObject3D::Corners QVQuadTrackObject3D::computeQuadVerticesWithTrackInfo(
    const platform::Value& trackInfo) {
    static constexpr const char* corners[] = {"bottomleft", "bottomright", "topright", "topleft"};
    Corners vertices{};
    for (size_t corner = 0; corner < 4; ++corner) {
        const std::string name = corners[corner];
        vertices[3 * corner] = trackInfo.real(name + "x") - 0.5f;
        vertices[3 * corner + 1] = trackInfo.real(name + "y") - 0.5f;
    }
    return vertices;
}

}  // namespace multiscene
