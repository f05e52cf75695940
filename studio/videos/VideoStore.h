// The finished videos: rows, and a file and a poster for each.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/store/Database.h"
#include "studio/videos/Video.h"

namespace multiscene::studio {

/// Studio queue. Throws platform::Error.
class VideoStore {
  public:
    /// Makes the table that is missing. `folder` exists.
    VideoStore(platform::Database& database, std::filesystem::path folder);

    std::filesystem::path fileOf(const std::string& id) const { return folder_ / (id + ".mp4"); }
    std::filesystem::path posterOf(const std::string& id) const { return folder_ / (id + ".jpg"); }

    /// Its files have their names already.
    void add(const Video& video);
    /// Whosever it is.
    std::optional<Video> find(const std::string& id);
    /// A session's own.
    std::optional<Video> find(const std::string& id, const std::string& session);
    /// A session's but for drafts, the newest first, older than the cursor (a video's id; empty: all).
    std::vector<Video> list(const std::string& session, int64_t most, const std::string& cursor);
    int64_t bytesOfAll();
    void change(const std::string& id, const std::string& title, bool isKept);
    void remove(const std::string& id);

    /// Removes what has expired and is not kept.
    void removeExpired(int64_t now);
    /// Removes rows without files, and files without rows that are so old.
    void sweep(std::chrono::seconds age);

  private:
    void removeFiles(const std::string& id) const;

    platform::Database& database_;
    std::filesystem::path folder_;
};

}  // namespace multiscene::studio
