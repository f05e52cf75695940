#include "app/intake/Intake.h"

#include <fcntl.h>

#include <cerrno>
#include <optional>

#include "app/job/UserVideo.h"
#include "platform/audio/AudioFile.h"
#include "platform/base/File.h"
#include "platform/base/FileGate.h"
#include "platform/image/ImageDecoder.h"
#include "platform/image/ImageWriter.h"
#include "platform/image/PictureFormat.h"
#include "platform/media/VideoReader.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::FileHandle;

namespace {

constexpr int kPhotoSide = 4096, kProxySide = 1600;  // pixels
constexpr int kProxyQuality = 85;
constexpr int kFramesPerSecond = 30;  // in which a film is measured

FileHandle opened(const fs::path& file) {
    FileHandle handle = platform::openFile(file, O_RDONLY | O_NONBLOCK);
    if (!handle) throw platform::errnoError(errno, "cannot be read", file.string(), ErrorKind::Input);
    if (!handle.isRegular()) throw Error(ErrorKind::Input, "is no file", file.string());
    return handle;
}

TakenIn takePhoto(const FileHandle& file, const fs::path& path, const fs::path& folder) {
    const auto kept =
        platform::keepPhoto(file, folder, kPhotoSide, kProxySide, {path.string(), ErrorKind::Input});
    return {.kind = TakenIn::Kind::Photo,
            .width = kept.size.width,
            .height = kept.size.height,
            .file = kept.file};
}

void writeFirstPicture(platform::VideoReader& reader, const fs::path& out) {
    const auto first = reader.nextFrame();
    if (!first) return;
    const platform::FilmPicture& picture = *first->pixels;
    platform::writeFileAtomically(
        out, platform::encodeJpeg({picture.width(), picture.height(), picture.data(), picture.stride()},
                                  kProxyQuality, kProxySide));
}

TakenIn takeVideo(const fs::path& path, const fs::path& folder, const std::stop_token& stop) {
    platform::FileGate gate;
    gate.allowFile(path);
    const int64_t most = int64_t{kLongestUserVideo} * kFramesPerSecond;
    const UserVideo judged = judgeUserVideo(path, kFramesPerSecond, 0, most, gate, stop);
    platform::VideoReader reader(opened(path), path.string(), ErrorKind::Input);
    writeFirstPicture(reader, folder / "proxy.jpg");
    return {.kind = TakenIn::Kind::Video,
            .width = reader.info().width,
            .height = reader.info().height,
            .seconds = judged.isWhole ? judged.seconds : reader.info().durationSeconds(),
            .file = path};
}

/// Nothing for what is not opened as a film.
std::optional<platform::VideoInfo> filmAt(const fs::path& path) {
    try {
        return platform::probeVideo(opened(path), path.string(), ErrorKind::Input);
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::Input) throw;
        return std::nullopt;
    }
}

TakenIn takeSound(const fs::path& path) {
    try {
        const platform::AudioFile sound(opened(path), path.string(), ErrorKind::Input);
        return {.kind = TakenIn::Kind::Sound,
                .seconds = platform::CMTimeGetSeconds(sound.duration()),
                .file = path};
    } catch (const Error& error) {
        if (error.kind() != ErrorKind::Input) throw;
        throw Error(ErrorKind::Input, "is no photo, video or sound that can be read", path.string());
    }
}

}  // namespace

const char* nameOf(TakenIn::Kind kind) {
    static constexpr const char* names[] = {"photo", "video", "sound"};
    return names[static_cast<int>(kind)];
}

TakenIn takeIn(const fs::path& file, const fs::path& folder, const std::stop_token& stop) {
    const FileHandle handle = opened(file);
    if (platform::pictureFormatOf(handle) != platform::PictureFormat::Unknown)
        return takePhoto(handle, file, folder);
    return filmAt(file) ? takeVideo(file, folder, stop) : takeSound(file);
}

}  // namespace multiscene
