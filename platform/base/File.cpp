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

void writeAll(int descriptor, std::string_view bytes, const std::string& name) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw errnoError(errno, "cannot write", name);
        bytes.remove_prefix(static_cast<size_t>(written));
    }
}

void copyInto(const fs::path& from, int target, const std::string& reportedTarget) {
    const FileHandle source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
    if (!source) throw errnoError(errno, "cannot read", from.string());
    std::vector<char> buffer(1 << 20);
    for (;;) {
        const ssize_t count = ::read(source.descriptor(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw errnoError(errno, "cannot read", from.string());
        if (count == 0) return;
        writeAll(target, {buffer.data(), static_cast<size_t>(count)}, reportedTarget);
    }
}

}  // namespace

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

uint64_t FileHandle::size() const {
    struct stat info {};
    return ::fstat(descriptor_, &info) == 0 ? static_cast<uint64_t>(info.st_size) : 0;
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
        const ssize_t count =
            ::pread(file.descriptor(), bytes.data() + used, bytes.size() - used, static_cast<off_t>(used));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) throw errnoError(errno, "cannot read", name, kind);
        if (count == 0) break;
        used += static_cast<size_t>(count);
        if (used > maxBytes) throw Error(kind, "larger than " + std::to_string(maxBytes) + " bytes", name);
        if (used == bytes.size()) bytes.resize(bytes.size() * 2);
    }
    bytes.resize(used);
    return bytes;
}

std::vector<uint8_t> readFile(const fs::path& file, uint64_t maxBytes, ErrorKind kind) {
    const FileHandle handle(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!handle) throw errnoError(errno, "cannot open", file.string(), kind);
    struct stat info {};
    if (::fstat(handle.descriptor(), &info) != 0 || !S_ISREG(info.st_mode))
        throw Error(kind, "not a regular file", file.string());
    return readFile(handle, file.string(), maxBytes, kind);
}

void writeFileAtomically(const fs::path& file, std::string_view bytes) {
    PartFile part(file);
    writeAll(part.descriptor(), bytes, file.string());
    if (::fsync(part.descriptor()) != 0 && errno != EINVAL)
        throw errnoError(errno, "cannot write", file.string());
    part.publish();
}

void createFolders(const fs::path& folder) {
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (failure) throw errnoError(failure.value(), "cannot create the folder", folder.string());
}

void moveFile(const fs::path& from, const fs::path& to) {
    makeUsuallyReadable(from);
    if (::rename(from.c_str(), to.c_str()) == 0) return;
    if (errno != EXDEV) throw errnoError(errno, "cannot write", to.string());
    PartFile part(to);
    copyInto(from, part.descriptor(), to.string());
    part.publish();
    ::unlink(from.c_str());
}

}  // namespace platform
