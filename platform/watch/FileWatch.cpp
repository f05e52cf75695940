#include "platform/watch/FileWatch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/base/Clock.h"
#include "platform/base/Limits.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr double kQuiet = 0.04;        // seconds: who saves several files saves them at once
constexpr double kLongestWriting = 2;  // seconds: then what is there is shown
constexpr size_t kMostFolders = limitOf<size_t>("maxWatchedFolders");

constexpr uint32_t kSaved = IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_DELETE_SELF;

/// Editors' own files beside the one that they edit.
bool isPassing(const std::string& name) {
    return name.starts_with('.') || name.ends_with('~') || name.ends_with(".swp") || name.ends_with(".tmp");
}

}  // namespace

FileWatch::FileWatch(const std::vector<fs::path>& paths)
    : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    for (const fs::path& path : paths) add(path);
}

void FileWatch::add(const fs::path& path) {
    std::error_code failure;
    const fs::path whole = fs::absolute(path, failure);
    if (fs::is_directory(whole, failure))
        addTree(whole);
    else if (!failure)
        addFolder(whole.parent_path(), whole.filename());
}

void FileWatch::addTree(const fs::path& folder) {
    addFolder(folder, {});
    std::error_code failure;
    for (fs::recursive_directory_iterator entry(folder, failure), end;
         !failure && entry != end && folders_.size() < kMostFolders; entry.increment(failure))
        if (std::error_code gone; entry->is_directory(gone) && !entry->is_symlink(gone))
            addFolder(entry->path(), {});
}

/// A file is watched by way of its folder: editors put another one in its place.
void FileWatch::addFolder(const fs::path& folder, const std::string& name) {
    const int watch = ::inotify_add_watch(events_.descriptor(), folder.c_str(),
                                          kSaved | IN_MODIFY | IN_CREATE | IN_ONLYDIR);
    if (watch < 0) return;
    if (folders_.size() == kMostFolders && !folders_.contains(watch)) {
        ::inotify_rm_watch(events_.descriptor(), watch);
        return;
    }
    const auto [known, isNew] = folders_.try_emplace(watch, Folder{folder, {}});
    if (name.empty())
        known->second.names.clear();
    else if (isNew || !known->second.names.empty())
        known->second.names.insert(name);
}

bool FileWatch::hasChanged() {
    read();
    const double now = monotonicSeconds();
    std::erase_if(writing_, [&](const auto& file) { return now - file.second > kLongestWriting; });
    if (!isChanged_ || !writing_.empty() || now - changedAt_ < kQuiet) return false;
    isChanged_ = false;
    return true;
}

void FileWatch::read() {
    alignas(inotify_event) char buffer[16 * 1024];
    ssize_t size = 0;
    while ((size = ::read(events_.descriptor(), buffer, sizeof buffer)) > 0) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, buffer + at, sizeof event);
            const char* const name = buffer + at + sizeof event;
            take(event.wd, event.mask, event.len > 0 ? std::string(name) : std::string());
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

void FileWatch::take(int watch, uint32_t what, const std::string& name) {
    const auto folder = folders_.find(watch);
    if (folder == folders_.end() || isPassing(name)) return;
    const std::set<std::string>& names = folder->second.names;
    if (!names.empty() && !names.contains(name)) return;
    const fs::path path = folder->second.path / name;
    if ((what & IN_MODIFY) != 0) writing_.try_emplace(path, monotonicSeconds());
    if ((what & IN_CREATE) != 0 && (what & IN_ISDIR) != 0) addTree(path);
    if ((what & kSaved) != 0) {
        writing_.erase(path);
        isChanged_ = true;
    }
    changedAt_ = monotonicSeconds();
}

}  // namespace platform
