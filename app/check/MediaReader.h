#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <tuple>

#include "app/check/Finding.h"
#include "platform/base/File.h"
#include "platform/media/VideoInfo.h"
#include "playback/Playback.h"

namespace multiscene {

/// What a key wants a file to be.
enum class MediaKind { Picture, PvrPicture, Sound, Track, Video, ColorTable, Mesh };

/// Reads files of the template as what their keys want, each file once however often it is named: what is
/// judged with one reader must not change meanwhile. One thread.
class MediaReader {
  public:
    /// Files are found and opened as that playback does, which outlives the reader.
    explicit MediaReader(Playback& playback) : playback_(playback) {}

    Playback& playback() const { return playback_; }

    /// `place` carries file and key path; its text is filled in. Nothing when the file can be read, and
    /// nothing when it cannot be opened: judgeFileName tells that.
    std::optional<Finding> judge(MediaKind kind, const std::string& path, const std::string& sceneFolder,
                                 Finding place);

    /// Whether a picture has pixels that are not opaque; false when it cannot be read.
    bool isTransparentPicture(const std::string& path, const std::string& sceneFolder);

    /// What a video says about itself; nothing when it cannot be read.
    std::optional<platform::VideoInfo> film(const std::string& path, const std::string& sceneFolder);

  private:
    struct Reading {
        std::string problem;  ///< empty: it can be read
        bool isTransparent = false;
        platform::VideoInfo film;
    };
    using File = std::tuple<MediaKind, dev_t, ino_t>;

    /// Null when the file cannot be opened.
    const Reading* reading(MediaKind kind, const std::string& path, const std::string& sceneFolder);
    static Reading read(MediaKind kind, platform::FileHandle file, const std::string& name);
    Reading readMesh(const std::string& path, const std::string& sceneFolder);

    Playback& playback_;
    std::map<File, Reading> readings_;
};

}  // namespace multiscene
