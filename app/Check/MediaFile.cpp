#include "app/Check/MediaFile.h"

#include "3DObject/QuadObject3D/TrackFile.h"
#include "core/GLESUtils/PvrFile.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/audio/AudioFile.h"
#include "platform/base/FileGate.h"
#include "platform/image/ImageDecoder.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::FileHandle;

namespace {

constexpr int kJudgedSide = 64;  // pixels: every byte is read, and few are kept

/// All of it: a picture that is cut short has a header like any other.
void requirePicture(const FileHandle& file, const std::string& name) {
    platform::decodeImage(file, {.maxLongSide = kJudgedSide, .source = {name, ErrorKind::Template}});
}

void requirePvr(const FileHandle& file, const std::string& name) {
    const PvrFile picture(platform::readFile(file, name, PvrFile::maxBytes));
    if (!picture.problem().empty()) throw Error(ErrorKind::Template, picture.problem());
}

void requireTrack(const FileHandle& file, const std::string& name) {
    const auto plain =
        TrackFile::decryptedAES256DataUsingDefaultKey(platform::readFile(file, name, TrackFile::maxBytes));
    if (!plain)
        throw Error(ErrorKind::Template, "is no stored track; make it with \"template encrypt-track\"");
    if (TrackFile::frames(*plain).empty()) throw Error(ErrorKind::Template, "holds no frames");
}

void require(MediaKind kind, FileHandle file, const std::string& name) {
    switch (kind) {
        case MediaKind::Picture:
            return requirePicture(file, name);
        case MediaKind::PvrPicture:
            return requirePvr(file, name);
        case MediaKind::Sound: {
            const platform::AudioFile sound(std::move(file), name);
            return;
        }
        case MediaKind::Track:
            return requireTrack(file, name);
    }
}

}  // namespace

std::optional<Finding> judgeMediaFile(MediaKind kind, const std::string& path, const std::string& sceneFolder,
                                      Finding place) {
    FileGate::Opened opened = FileGate::shared().open(
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(path, sceneFolder));
    if (opened.verdict != FileGate::Verdict::Allowed) return std::nullopt;
    try {
        require(kind, std::move(opened.file), path);
        return std::nullopt;
    } catch (const Error& error) {
        place.message = "\"" + path + "\": " + error.message();
        place.remedy = "replace the file";
        return place;
    }
}

}  // namespace multiscene
