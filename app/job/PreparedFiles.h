#pragma once

#include <filesystem>
#include <functional>
#include <list>
#include <optional>
#include <stop_token>

#include "app/job/JobFolder.h"
#include "app/job/UserVideo.h"
#include "platform/base/FileStamp.h"
#include "platform/image/ImageDecoder.h"

namespace multiscene {

/// What was made of the user's files, in a job's folder: who takes the same ones again and again has them
/// made once. One thread.
class PreparedFiles {
  public:
    explicit PreparedFiles(const JobFolder& job) : job_(job) {}

    /// What a photo is made into.
    struct PhotoShape {
        platform::Aspect aspect;
        int longSide = 0;  ///< pixels
        platform::PhotoCrop crop;

        bool operator==(const PhotoShape&) const = default;
    };
    /// The prepared photo, under a name that nothing else ever has. Throws platform::Error.
    std::filesystem::path photo(const platform::FileHandle& file, const PhotoShape& shape,
                                const platform::ImageSource& source);
    /// As judgeUserVideo().
    UserVideo video(const std::filesystem::path& video, int framesPerSecond, int64_t firstFrame,
                    int64_t mostFrames, platform::FileGate& gate, const std::stop_token& stop);
    /// A round of questions is over: what was not asked for lately goes.
    void endRound();

  private:
    struct Photo {
        std::optional<platform::FileStamp> file;
        PhotoShape shape;
        std::filesystem::path prepared;
        int64_t lastRound = 0;
    };
    struct Video {
        std::filesystem::path path;
        platform::FileStamp file;
        int framesPerSecond = 0;
        int64_t firstFrame = 0, mostFrames = 0;
        UserVideo judged;
    };

    const JobFolder& job_;
    std::list<Photo> photos_;
    std::list<Video> videos_;
    int64_t made_ = 0, round_ = 0;
};

}  // namespace multiscene
