#include "platform/base/File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/base/PartFile.h"
#include "platform/base/Paths.h"
#include "platform/base/PrivateFolder.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

enum class Found { Nothing, File, Folder, Other };

Found lookAt(const fs::path& path) {
    struct stat info {};
    int failure = 0;
    do {
        failure = ::stat(path.c_str(), &info) == 0 ? 0 : errno;
    } while (failure == EINTR);
    if (isPassing(failure)) throw errnoError(failure, "cannot be looked at", path.string());
    if (failure != 0) return Found::Nothing;
    if (S_ISREG(info.st_mode)) return Found::File;
    return S_ISDIR(info.st_mode) ? Found::Folder : Found::Other;
}

void copyInto(const fs::path& from, const FileHandle& target, const std::string& reportedTarget,
              const std::function<bool()>& isCancelled) {
    const FileHandle source = openFile(from, O_RDONLY);
    if (!source) throw errnoError(errno, "cannot read", from.string());
    std::vector<char> buffer(1 << 20);
    for (uint64_t done = 0;;) {
        const int64_t count = readAt(source, buffer.data(), buffer.size(), done);
        if (count < 0) throw errnoError(errno, "cannot read", from.string());
        if (count == 0) return;
        if (isCancelled && isCancelled()) throw Error(ErrorKind::Cancelled, "cancelled");
        writeAll(target, {buffer.data(), static_cast<size_t>(count)}, reportedTarget);
        done += static_cast<uint64_t>(count);
    }
}

}  // namespace

FileHandle openFile(const fs::path& file, int flags, unsigned mode) {
    int descriptor = -1;
    do {
        descriptor = ::open(file.c_str(), flags | O_CLOEXEC, mode);
    } while (descriptor < 0 && errno == EINTR);
    return FileHandle(descriptor);
}

bool isThere(const fs::path& path) { return lookAt(path) != Found::Nothing; }
bool isFile(const fs::path& path) { return lookAt(path) == Found::File; }
bool isFolder(const fs::path& path) { return lookAt(path) == Found::Folder; }

int64_t readAt(const FileHandle& file, void* bytes, uint64_t count, uint64_t offset) {
    uint64_t done = 0;
    while (done < count) {
        const ssize_t some = ::pread(file.descriptor(), static_cast<char*>(bytes) + done, count - done,
                                     static_cast<off_t>(offset + done));
        if (some < 0 && errno == EINTR) continue;
        if (some < 0) return -1;
        if (some == 0) break;
        done += static_cast<uint64_t>(some);
    }
    return static_cast<int64_t>(done);
}

void writeAll(const FileHandle& file, std::string_view bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.descriptor(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw errnoError(errno, "cannot write", name);
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

void flushToDisk(const FileHandle& file, const std::string& name) {
    int failure = 0;
    do {
        failure = ::fsync(file.descriptor()) == 0 ? 0 : errno;
    } while (failure == EINTR);
    // Some file systems cannot.
    if (failure != 0 && failure != EINVAL) throw errnoError(failure, "cannot write", name);
}

FileHandle& FileHandle::operator=(FileHandle&& other) noexcept {
    if (this != &other) {
        reset();
        descriptor_ = other.release();
    }
    return *this;
}

int FileHandle::release() {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor;
}

void FileHandle::reset() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

std::string FileHandle::name() const {
    std::error_code failure;
    return fs::read_symlink(path(), failure).string();
}

bool FileHandle::isRegular() const {
    struct stat info {};
    if (::fstat(descriptor_, &info) != 0) throw errnoError(errno, "cannot be read", name());
    return S_ISREG(info.st_mode);
}

uint64_t FileHandle::size() const {
    struct stat info {};
    if (::fstat(descriptor_, &info) != 0) throw errnoError(errno, "cannot be read", name());
    return static_cast<uint64_t>(info.st_size);
}

std::vector<uint8_t> readFile(const FileHandle& file, const std::string& name, uint64_t maxBytes,
                              ErrorKind kind) {
    std::vector<uint8_t> bytes;
    const uint64_t expected = file.size();
    if (expected > maxBytes) throw Error(kind, "larger than " + std::to_string(maxBytes) + " bytes", name);
    bytes.resize(expected + 1);
    size_t used = 0;
    for (;;) {
        // Positioned reads leave the handle's own offset alone, so a handle may be read more than once.
        const int64_t count = readAt(file, bytes.data() + used, bytes.size() - used, used);
        if (count < 0) throw errnoError(errno, "cannot read", name, kind);
        used += static_cast<size_t>(count);
        if (used > maxBytes) throw Error(kind, "larger than " + std::to_string(maxBytes) + " bytes", name);
        if (used < bytes.size()) break;
        bytes.resize(bytes.size() * 2);
    }
    bytes.resize(used);
    return bytes;
}

std::vector<uint8_t> readFile(const fs::path& file, uint64_t maxBytes, ErrorKind kind) {
    const FileHandle handle = openFile(file, O_RDONLY | O_NONBLOCK);
    if (!handle) throw errnoError(errno, "cannot open", file.string(), kind);
    if (!handle.isRegular()) throw Error(kind, "not a regular file", file.string());
    return readFile(handle, file.string(), maxBytes, kind);
}

void writeFileAtomically(const fs::path& file, std::string_view bytes) {
    PartFile part(file);
    writeAll(part.file(), bytes, file.string());
    part.publish();
}

void createFolders(const fs::path& folder) {
    // The standard library's function takes what it may not look at for something that is there.
    constexpr mode_t asOthersWish = 0777;
    const auto failureOfMaking = [&] { return ::mkdir(folder.c_str(), asOthersWish) == 0 ? 0 : errno; };
    int failure = failureOfMaking();
    const fs::path parent = folder.parent_path();
    if (failure == ENOENT && !parent.empty() && parent != folder) {
        createFolders(parent);
        failure = failureOfMaking();
    }
    if (failure != 0 && lookAt(folder) != Found::Folder)
        throw errnoError(failure, "cannot create the folder", folder.string());
}

void moveFile(const fs::path& from, const fs::path& to, const std::function<bool()>& isCancelled) {
    makeUsuallyReadable(from);
    {
        const FileHandle finished = openFile(from, O_RDONLY);
        if (!finished) throw errnoError(errno, "cannot read", from.string());
        flushToDisk(finished, to.string());
    }
    if (::rename(from.c_str(), to.c_str()) == 0) return;
    if (errno != EXDEV) throw errnoError(errno, "cannot write", to.string());
    PartFile part(to);
    copyInto(from, part.file(), to.string(), isCancelled);
    part.publish();
    ::unlink(from.c_str());
}

void moveFile(const fs::path& from, const fs::path& to) { moveFile(from, to, {}); }

}  // namespace platform
