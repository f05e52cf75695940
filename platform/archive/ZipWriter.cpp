#include "platform/archive/ZipWriter.h"

#include <fcntl.h>
#include <minizip/zip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <set>
#include <utility>

#include "platform/base/PartFile.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr uLong kFirstDosDate = 0x00210000;   // 1 January 1980
constexpr uLong kMadeByUnix = (3 << 8) | 20;  // permissions below are Unix ones
constexpr uLong kPlainFile = uLong(S_IFREG | 0644) << 16;
constexpr uLong kNameIsUtf8 = 0x0800;
constexpr uint64_t kNeedsZip64 = 0xffffffffu;

/// Media is packed already; packing it again costs time and gains nothing.
bool isPackedAlready(const fs::path& file) {
    static const std::set<std::string> extensions{".gz",  ".heic", ".jpeg", ".jpg", ".m4a",
                                                  ".mp3", ".mp4",  ".ogg",  ".png", ".webp"};
    return extensions.contains(file.extension().string());
}

FileHandle openSource(const ZipSource& source) {
    FileHandle file = openFile(source.file, O_RDONLY | O_NONBLOCK | O_NOFOLLOW);
    if (!file) throw errnoError(errno, "cannot read", source.file.string());
    if (!file.isRegular()) throw Error(ErrorKind::Failed, "is no plain file", source.file.string());
    return file;
}

/// An archive that has its name only when it is published.
class PartialZip {
  public:
    explicit PartialZip(const fs::path& target)
        : target_(target), part_(target), zip_(zipOpen64(part_.path().c_str(), APPEND_STATUS_CREATE)) {
        if (!zip_) throw errnoError(errno, "cannot write", target.string());
    }
    ~PartialZip() {
        if (zip_) zipClose(zip_, nullptr);
    }
    PartialZip(const PartialZip&) = delete;
    PartialZip& operator=(const PartialZip&) = delete;

    void add(const ZipSource& source) {
        const FileHandle file = openSource(source);
        open(source, file.size() >= kNeedsZip64);
        copy(file, source);
        if (zipCloseFileInZip(zip_) != ZIP_OK) fail();
    }

    /// Returns a path of the complete archive.
    fs::path close() {
        if (zipClose(std::exchange(zip_, nullptr), nullptr) != ZIP_OK) fail();
        return part_.path();
    }

    uint64_t size() const { return part_.file().size(); }
    void publish() { part_.publish(); }

  private:
    void open(const ZipSource& source, bool zip64) {
        zip_fileinfo info{};
        info.dosDate = kFirstDosDate;
        info.external_fa = kPlainFile;
        const int method = isPackedAlready(source.file) ? 0 : Z_DEFLATED;
        if (zipOpenNewFileInZip4_64(zip_, source.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, method,
                                    Z_BEST_COMPRESSION, 0, -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY,
                                    nullptr, 0, kMadeByUnix, kNameIsUtf8, zip64) != ZIP_OK)
            fail();
    }

    void copy(const FileHandle& file, const ZipSource& source) {
        std::array<char, 1 << 16> buffer;
        for (uint64_t done = 0;;) {
            const int64_t count = readAt(file, buffer.data(), buffer.size(), done);
            if (count < 0) throw errnoError(errno, "cannot read", source.file.string());
            if (count == 0) return;
            done += static_cast<uint64_t>(count);
            if (zipWriteInFileInZip(zip_, buffer.data(), static_cast<unsigned>(count)) != ZIP_OK) fail();
        }
    }

    [[noreturn]] void fail() const {
        throw errnoError(errno ? errno : EIO, "cannot write", target_.string());
    }

    fs::path target_;
    PartFile part_;
    zipFile zip_;
};

}  // namespace

uint64_t writeZip(const fs::path& archive, std::vector<ZipSource> sources,
                  const std::function<void(const fs::path& written)>& judge) {
    std::sort(sources.begin(), sources.end(),
              [](const ZipSource& left, const ZipSource& right) { return left.name < right.name; });
    PartialZip zip(archive);
    for (const ZipSource& source : sources) zip.add(source);
    const fs::path written = zip.close();
    if (judge) judge(written);
    const uint64_t bytes = zip.size();
    zip.publish();
    return bytes;
}

}  // namespace platform
