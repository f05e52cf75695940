#include "app/job/OutputFile.h"

#include <cctype>
#include <climits>

#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/PartFile.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;

namespace {

/// Names that no file can have are refused here, before the work starts.
fs::path absolutePath(const fs::path& path) {
    if (path.empty()) throw Error(ErrorKind::Usage, "the output has no name", "", "--output");
    for (const fs::path& name : path)
        if (name.native().size() > NAME_MAX)
            throw Error(ErrorKind::Usage,
                        "the output's name has " + std::to_string(name.native().size()) +
                            " bytes; there may be " + std::to_string(NAME_MAX),
                        path.string());
    const fs::path absolute = fs::absolute(path).lexically_normal();
    if (absolute.native().size() >= PATH_MAX)
        throw Error(ErrorKind::Usage, "the output's path is too long", path.string());
    return absolute;
}

/// What a link leads to is replaced, and the link stays: /dev/stdout is one.
fs::path behindLinks(fs::path path) {
    constexpr int most = 40;
    std::error_code failure;
    for (int count = 0; count < most && fs::is_symlink(fs::symlink_status(path, failure)); ++count)
        path = path.parent_path() / fs::read_symlink(path, failure);
    return path;
}

/// Nobody says what lies there.
bool isHidden(const fs::path& path) {
    std::error_code failure;
    (void)fs::status(path, failure);
    return failure == std::errc::permission_denied;
}

/// Permissions do not tell everything (read-only disks, quotas): only writing does.
void requireWritable(const fs::path& file) {
    platform::removeAbandonedParts(file.parent_path());
    const platform::PartFile probe(file);
}

}  // namespace

OutputFile::OutputFile(const fs::path& path) : path_(behindLinks(absolutePath(path))) {
    if (!path_.has_filename() || platform::isFolder(path_))
        throw Error(ErrorKind::Usage, "the output is a folder, not a file", path.string());
    if (platform::isThere(path_) && !platform::isFile(path_))
        throw Error(ErrorKind::Usage, "the output is not a regular file", path.string());
    if (!platform::isFolder(path_.parent_path()) && !isHidden(path_.parent_path()))
        throw Error(ErrorKind::Usage, "there is no folder " + path_.parent_path().string(), path.string());
    requireWritable(path_);
}

OutputFile OutputFile::video(const fs::path& path) {
    std::string ending = path.extension().string();
    for (char& letter : ending) letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
    if (!ending.empty() && ending != ".mp4" && ending != ".m4v")
        throw Error(ErrorKind::Usage,
                    "videos are written as MP4: give the output a name that ends in .mp4, not " + ending,
                    path.string());
    return OutputFile(path);
}

void OutputFile::publish(const fs::path& finished, const std::function<bool()>& isCancelled) const {
    platform::moveFile(finished, path_, isCancelled);
}

fs::path outputFolder(const fs::path& path) {
    const fs::path folder = absolutePath(path);
    if (platform::isThere(folder) && !platform::isFolder(folder))
        throw Error(ErrorKind::Usage, "the output is a file, not a folder", path.string());
    platform::createFolders(folder);
    requireWritable(folder / "frame");
    return folder;
}

}  // namespace multiscene
