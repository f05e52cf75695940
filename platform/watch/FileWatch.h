#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <vector>

#include "platform/base/File.h"

namespace platform {

/// Says when files were saved (inotify). A file that somebody is still writing is waited for, and so is
/// whoever saves several files at once. One thread.
class FileWatch {
  public:
    /// Folders with everything below them, and files. What does not exist, or cannot be watched, is left out.
    explicit FileWatch(const std::vector<std::filesystem::path>& paths);

    /// Whether something was saved, moved or removed since the last time this was true, and all is quiet.
    /// Cheap enough for a hundred times a second.
    bool hasChanged();

  private:
    struct Folder {
        std::filesystem::path path;
        std::set<std::string> names;  ///< the files that count; none: all, and the folders below
    };

    void add(const std::filesystem::path& path);
    void addTree(const std::filesystem::path& folder);
    void addFolder(const std::filesystem::path& folder, const std::string& name);
    void read();
    void take(int watch, uint32_t what, const std::string& name);

    FileHandle events_;
    std::map<int, Folder> folders_;
    std::map<std::filesystem::path, double> writing_;  ///< files that are open and changed, since when
    bool isChanged_ = false;
    double changedAt_ = 0;
};

}  // namespace platform
