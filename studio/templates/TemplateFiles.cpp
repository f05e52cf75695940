#include "studio/templates/TemplateFiles.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <string_view>

#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "studio/api/Problem.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::FileHandle;
using platform::http::Answer;

namespace {

constexpr uint64_t kMostVideoBytes = platform::limitOf("maxEntryBytes");

struct Kind {
    const char* contentType;
    size_t at;
    std::string_view bytes;
};
constexpr Kind kPictures[] = {{"image/jpeg", 0, "\xff\xd8\xff"}, {"image/png", 0, "\x89PNG\r\n\x1a\n"}};
constexpr Kind kVideos[] = {{"video/mp4", 4, "ftyp"}};

FileHandle openBelow(const fs::path& folder, const std::string& name) {
    const FileHandle root = platform::openFile(folder, O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (!root) return {};
    open_how how{};
    how.flags = O_RDONLY | O_NONBLOCK | O_CLOEXEC;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return FileHandle(
        static_cast<int>(::syscall(SYS_openat2, root.descriptor(), name.c_str(), &how, sizeof how)));
}

std::string tagOf(const FileHandle& file) {
    struct stat info {};
    ::fstat(file.descriptor(), &info);
    return "\"" + std::to_string(info.st_ino) + "-" + std::to_string(info.st_size) + "-" +
           std::to_string(info.st_mtim.tv_sec) + "\"";
}

template <size_t Count>
Answer fileIn(const fs::path& folder, const std::string& name, const Kind (&kinds)[Count],
              uint64_t mostBytes) {
    FileHandle file = openBelow(folder, name);
    if (!file || !file.isRegular() || file.size() > mostBytes) throw notFound("file of the template");
    std::array<char, 16> start{};
    const int64_t count = platform::readAt(file, start.data(), start.size(), 0);
    const std::string_view bytes(start.data(), count > 0 ? static_cast<size_t>(count) : 0);
    for (const Kind& kind : kinds)
        if (bytes.size() > kind.at && bytes.substr(kind.at).starts_with(kind.bytes)) {
            const std::string tag = tagOf(file);
            return Answer::ofFile(std::move(file), kind.contentType)
                .with("ETag", tag)
                .with("Cache-Control", "private, no-cache")
                .with("Content-Security-Policy", "default-src 'none'");
        }
    throw notFound("file of the template");
}

}  // namespace

Answer pictureIn(const fs::path& folder, const std::string& name) {
    return fileIn(folder, name, kPictures, platform::limitOf("maxThumbnailBytes"));
}

Answer videoIn(const fs::path& folder, const std::string& name) {
    return fileIn(folder, name, kVideos, kMostVideoBytes);
}

}  // namespace multiscene::studio
