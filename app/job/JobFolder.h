#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "platform/store/FileLock.h"

namespace multiscene {

/// A job's private folder below the data home: scene-group file, prepared photos, silent video, mix. Nobody
/// but its user may look into it. It is removed when the object ends; what a killed job left is removed when
/// the next job starts. Where the data home cannot be written it lies below the temporary folder.
class JobFolder {
  public:
    /// Makes jobs/<unique>. Other programs that make theirs are waited for; `isCancelled` is asked meanwhile.
    /// Throws platform::Error, Cancelled when that says so.
    explicit JobFolder(const std::function<bool()>& isCancelled = {});
    ~JobFolder();
    JobFolder(const JobFolder&) = delete;
    JobFolder& operator=(const JobFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path file(const std::string& name) const { return path_ / name; }

    /// From now on jobs have their folders in this one, which somebody else keeps and removes: that of a
    /// worker, which can write nowhere else.
    static void nestIn(const std::filesystem::path& folder);

    /// Removes the folders of all jobs of this process at once, as when a second Ctrl-C must not wait for
    /// the running work. Any thread; the process ends afterwards.
    static void removeAllOfThisProcess();

  private:
    void make(const std::function<bool()>& isCancelled);
    void makeIn(const std::filesystem::path& home, const std::function<bool()>& isCancelled);

    std::filesystem::path path_;
    std::optional<platform::FileLock> lock_;
};

}  // namespace multiscene
