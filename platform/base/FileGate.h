// The fence around a template: the one place through which every file that a template names is opened.
#pragma once

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "platform/base/File.h"

namespace platform {

/// Lets files be opened only when their real path (links resolved) lies below an allowed folder or is one of
/// the user's own inputs, and only regular files. All operations are safe from any thread.
class FileGate {
  public:
    enum class Verdict { Allowed, Missing, Outside, NotRegular, Unreadable };

    struct Opened {
        Verdict verdict = Verdict::Missing;
        FileHandle file;  ///< set only when Allowed
    };

    struct Refusal {
        std::string path;
        Verdict verdict;
    };

    /// Everything below `folder` may be opened. A folder that does not exist allows nothing.
    void allowFolder(const std::filesystem::path& folder);
    /// This very file may be opened: an input that the user named.
    void allowFile(const std::filesystem::path& file);

    /// What the other one allows at the moment.
    void allowAllOf(const FileGate& other);

    /// Opens a file for reading. The verdict holds for the descriptor itself, so a link swapped in afterwards
    /// changes nothing. Refusals (not missing files) are remembered. Throws Error when the machine does not
    /// manage to look: no file is missing because the program has too many open.
    Opened open(const std::filesystem::path& file);
    /// The verdict alone; remembers refusals as open() does.
    Verdict check(const std::filesystem::path& file) { return open(file).verdict; }
    bool exists(const std::filesystem::path& file) { return check(file) == Verdict::Allowed; }

    /// Refused paths, each once, in order.
    std::vector<Refusal> refusals() const;

  private:
    bool isInput(const std::filesystem::path& realPath) const;
    bool isAllowed(const std::filesystem::path& realPath) const;
    void remember(const std::string& path, Verdict verdict);

    mutable std::mutex mutex_;
    std::vector<std::filesystem::path> folders_, files_;
    std::vector<Refusal> refusals_;
};

/// "lies outside the template", "is not a regular file": the reason of a refusal, for messages.
const char* describe(FileGate::Verdict verdict);

}  // namespace platform
