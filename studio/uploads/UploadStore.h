// What was uploaded: rows, and a folder for each.
#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/store/Database.h"
#include "studio/uploads/Upload.h"

namespace multiscene::studio {

/// An upload stays while a job uses it, and until it expires. Studio queue. Throws platform::Error.
class UploadStore {
  public:
    /// Makes the table that is missing. `folder` exists.
    UploadStore(platform::Database& database, std::filesystem::path folder);

    std::filesystem::path folderOf(const std::string& id) const { return folder_ / id; }
    std::filesystem::path fileOf(const Upload& upload) const { return folderOf(upload.id) / upload.file; }

    void add(const Upload& upload);
    /// A session's own.
    std::optional<Upload> find(const std::string& id, const std::string& session);
    int64_t bytesOf(const std::string& session);
    int64_t countOf(const std::string& session);
    /// False when the link to that upload was used before. It is remembered until it expires.
    bool useLink(const std::string& upload, int64_t expires);
    /// It may be used again: what came could not be looked at.
    void freeLink(const std::string& upload);
    int64_t bytesOfAll();
    /// Uploads of jobs that have not ended stay: false.
    bool remove(const std::string& id);

    /// Those of a job that has ended, unless another uses them, expire then.
    void release(const std::string& job, int64_t expires);
    /// Those of a job expire now, unless another one uses them.
    void removeOf(const std::string& job);
    /// Removes what has expired and nobody uses.
    void removeExpired(int64_t now);
    /// Removes rows without folders, and folders without rows that are so old: what is being received has
    /// none yet, what a session that is gone has left has none any more.
    void sweep(std::chrono::seconds age);

  private:
    void removeThose(const std::string& condition, int64_t number, const std::string& text);

    platform::Database& database_;
    std::filesystem::path folder_;
};

}  // namespace multiscene::studio
