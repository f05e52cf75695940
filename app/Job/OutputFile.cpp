#include "app/Job/OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Paths.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;

namespace {

/// Permissions do not tell everything (read-only disks, quotas): only writing does.
void requireWritable(const fs::path& folder, const fs::path& output) {
    const fs::path probe = folder / ("." + platform::uniqueIdentifier() + ".probe");
    const platform::FileHandle file(::open(probe.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!file) throw platform::errnoError(errno, "cannot write there", output.string());
    ::unlink(probe.c_str());
}

}  // namespace

OutputFile::OutputFile(const fs::path& path) : path_(fs::absolute(path).lexically_normal()) {
    std::error_code failure;
    const fs::file_status status = fs::status(path_, failure);
    if (path.empty() || !path_.has_filename() || fs::is_directory(status))
        throw Error(ErrorKind::Usage, "the output is a folder, not a file", path.string());
    if (fs::exists(status) && !fs::is_regular_file(status))
        throw Error(ErrorKind::Usage, "the output is not a regular file", path.string());
    requireWritable(path_.parent_path(), path);
}

void OutputFile::publish(const fs::path& finished) const { platform::moveFile(finished, path_); }

fs::path outputFolder(const fs::path& path) {
    const fs::path folder = fs::absolute(path).lexically_normal();
    std::error_code failure;
    if (fs::exists(folder, failure) && !fs::is_directory(folder, failure))
        throw Error(ErrorKind::Usage, "the output is a file, not a folder", path.string());
    platform::createFolders(folder);
    requireWritable(folder, path);
    return folder;
}

}  // namespace multiscene
