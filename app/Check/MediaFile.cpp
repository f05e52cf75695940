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

FileGate::Opened open(const std::string& path, const std::string& sceneFolder) {
    return FileGate::shared().open(
        QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(path, sceneFolder));
}

/// All of it: a picture that is cut short has a header like any other.
platform::Bitmap decoded(const FileHandle& file, const std::string& name) {
    return platform::decodeImage(file, {.maxLongSide = kJudgedSide, .source = {name, ErrorKind::Template}});
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
    const platform::Value::Array frames = TrackFile::frames(*plain);
    if (frames.empty()) throw Error(ErrorKind::Template, "holds no frames");
    if (const std::string problem = TrackFile::problemOf(frames); !problem.empty())
        throw Error(ErrorKind::Template, problem);
}

void require(MediaKind kind, FileHandle file, const std::string& name) {
    switch (kind) {
        case MediaKind::Picture:
            decoded(file, name);
            return;
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

bool isTransparentPicture(const std::string& path, const std::string& sceneFolder) {
    const FileGate::Opened opened = open(path, sceneFolder);
    if (opened.verdict != FileGate::Verdict::Allowed) return false;
    try {
        const platform::Bitmap picture = decoded(opened.file, path);
        for (size_t alpha = 3; alpha < picture.rgba.size(); alpha += 4)
            if (picture.rgba[alpha] != 255) return true;
    } catch (const Error&) {
    }
    return false;
}

std::optional<Finding> judgeMediaFile(MediaKind kind, const std::string& path, const std::string& sceneFolder,
                                      Finding place) {
    FileGate::Opened opened = open(path, sceneFolder);
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
