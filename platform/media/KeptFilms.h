// Private to platform/media: what is known of films from decoding them before.
#pragma once

#include <compare>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "platform/base/CMTime.h"
#include "platform/base/Error.h"
#include "platform/base/FileStamp.h"
#include "platform/base/RecentlyWanted.h"
#include "platform/media/VideoReader.h"

namespace platform {

/// The frames of one film as certain settings deliver them, as far as anybody has decoded it. Any thread.
class KeptFilm {
  public:
    struct Frame {
        CMTime time;
        int64_t picture = 0;  ///< its number; the same in frames that show the same one again
        int width = 0, height = 0;
        bool isOpaque = true;
    };

    std::optional<Frame> at(int64_t index) const;
    /// Whether the film is known to have no such frame.
    bool endsBefore(int64_t index) const;
    std::optional<Error> error() const;
    /// Whether a good part of it is known, and no damage.
    bool isSound() const;

    void noteDamage();
    void note(int64_t index, const Frame& frame);
    void noteEnd(const std::optional<Error>& error);

  private:
    mutable std::mutex mutex_;
    std::vector<Frame> frames_;
    bool isWhole_ = false, isDamaged_ = false;
    std::optional<Error> error_;
};

/// Films, and of their pictures those that were looked at last, up to so many bytes. Any thread.
class KeptFilms {
  public:
    using Picture = std::shared_ptr<const FilmPicture>;

    void setMostBytes(size_t bytes);
    /// None where nothing is kept, or the file may just be being written.
    std::shared_ptr<KeptFilm> film(const FileHandle& file, const VideoReaderSettings& settings);

    Picture picture(const std::shared_ptr<KeptFilm>& film, int64_t number);
    void keep(const std::shared_ptr<KeptFilm>& film, int64_t number, const Picture& picture);

  private:
    struct Key {
        FileStamp file;
        int width, height, framesPerSecond;
        int64_t firstFrame;
        bool premultipliesAlpha;
        auto operator<=>(const Key&) const = default;
    };
    using PictureKey = std::pair<std::shared_ptr<KeptFilm>, int64_t>;

    std::mutex mutex_;
    std::map<Key, std::shared_ptr<KeptFilm>> films_;
    RecentlyWanted<PictureKey, Picture> pictures_;
};

/// Those of the process; nothing is kept until it is told to.
KeptFilms& keptFilms();

}  // namespace platform
