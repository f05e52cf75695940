#include "app/check/MediaReader.h"

#include <sys/stat.h>

#include "3DObject/MeshObject3D/MeshModel.h"
#include "format/TrackFile.h"
#include "platform/audio/AudioFile.h"
#include "platform/image/ColorTable.h"
#include "platform/image/ImageDecoder.h"
#include "platform/image/PvrFile.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::FileHandle;

namespace {

constexpr int kJudgedSide = 64;  // pixels: every byte is read, and few are kept

FileGate::Opened open(Playback& playback, const std::string& path, const std::string& sceneFolder) {
    return playback.gate().open(
        playback.settings().multiSceneRenderPathResourcesWithString(path, sceneFolder));
}

/// All of it: a picture that is cut short has a header like any other.
platform::Bitmap decoded(const FileHandle& file, const std::string& name) {
    return platform::decodeImage(file, {.maxLongSide = kJudgedSide, .source = {name, ErrorKind::Template}});
}

void requirePvr(const FileHandle& file, const std::string& name) {
    const platform::PvrFile picture(platform::readFile(file, name, platform::PvrFile::maxBytes));
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

bool hasClearPixels(const platform::Bitmap& picture) {
    for (size_t alpha = 3; alpha < picture.rgba.size(); alpha += 4)
        if (picture.rgba[alpha] != 255) return true;
    return false;
}

}  // namespace

MediaReader::Reading MediaReader::read(MediaKind kind, FileHandle file, const std::string& name) {
    Reading reading;
    try {
        switch (kind) {
            case MediaKind::Picture:
                reading.isTransparent = hasClearPixels(decoded(file, name));
                break;
            case MediaKind::PvrPicture:
                requirePvr(file, name);
                break;
            case MediaKind::Sound: {
                const platform::AudioFile sound(std::move(file), name);
                break;
            }
            case MediaKind::Track:
                requireTrack(file, name);
                break;
            case MediaKind::ColorTable:
                platform::ColorTable::read(file, name);
                break;
            case MediaKind::Mesh:
                break;  // it names files beside itself
            case MediaKind::Video:
                reading.film = platform::probeVideo(file, name);
                break;
        }
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Transient) throw;
        reading.problem = error.message();
    }
    return reading;
}

MediaReader::Reading MediaReader::readMesh(const std::string& path, const std::string& sceneFolder) {
    Reading reading;
    try {
        const MeshModel mesh(playback_.settings().multiSceneRenderPathResourcesWithString(path, sceneFolder),
                             playback_.gate());
        if (!mesh.missingPictures().empty())
            reading.problem = "its picture \"" + mesh.missingPictures().front() + "\" cannot be read";
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Transient) throw;
        reading.problem = error.message();
    }
    return reading;
}

const MediaReader::Reading* MediaReader::reading(MediaKind kind, const std::string& path,
                                                 const std::string& sceneFolder) {
    FileGate::Opened opened = open(playback_, path, sceneFolder);
    struct stat info {};
    if (opened.verdict != FileGate::Verdict::Allowed || ::fstat(opened.file.descriptor(), &info) != 0)
        return nullptr;
    const File file(kind, info.st_dev, info.st_ino);
    auto known = readings_.find(file);
    if (known == readings_.end())
        known = readings_
                    .emplace(file, kind == MediaKind::Mesh ? readMesh(path, sceneFolder)
                                                           : read(kind, std::move(opened.file), path))
                    .first;
    return &known->second;
}

std::optional<Finding> MediaReader::judge(MediaKind kind, const std::string& path,
                                          const std::string& sceneFolder, Finding place) {
    const Reading* found = reading(kind, path, sceneFolder);
    if (!found || found->problem.empty()) return std::nullopt;
    place.message = "\"" + path + "\": " + found->problem;
    place.remedy = "replace the file";
    return place;
}

bool MediaReader::isTransparentPicture(const std::string& path, const std::string& sceneFolder) {
    const Reading* found = reading(MediaKind::Picture, path, sceneFolder);
    return found && found->isTransparent;
}

std::optional<platform::VideoInfo> MediaReader::film(const std::string& path,
                                                     const std::string& sceneFolder) {
    const Reading* found = reading(MediaKind::Video, path, sceneFolder);
    if (!found || !found->problem.empty()) return std::nullopt;
    return found->film;
}

}  // namespace multiscene
