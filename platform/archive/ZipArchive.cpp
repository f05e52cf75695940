#include "platform/archive/ZipArchive.h"

#include <fcntl.h>
#include <minizip/unzip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "platform/archive/ZipLayout.h"
#include "platform/archive/ZipNames.h"
#include "platform/archive/ZipStream.h"
#include "platform/base/File.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr uLong kEncryptedFlags = 0x0001 | 0x0040 | 0x2000;
constexpr uLong kStored = 0, kDeflated = 8;

struct CloseArchive {
    void operator()(void* archive) const { unzClose(archive); }
};
using OpenArchive = std::unique_ptr<void, CloseArchive>;

bool isPlain(const unz_file_info64& info) {
    const uLong mode = info.external_fa >> 16;
    return (mode & S_IFMT) == 0 || S_ISREG(mode) || S_ISDIR(mode);
}

FileHandle openRegular(const fs::path& archive, ErrorKind kind) {
    FileHandle file = openFile(archive, O_RDONLY | O_NONBLOCK);
    if (!file) throw errnoError(errno, "cannot open", archive.string(), kind);
    if (!file.isRegular()) throw Error(kind, "is no file", archive.string());
    return file;
}

/// Opens the folder of an entry below `root`, making what is missing; never through a link.
FileHandle folderOf(const FileHandle& root, const std::string& name, const std::string& reported) {
    FileHandle folder(::dup(root.descriptor()));
    size_t from = 0;
    for (size_t slash; (slash = name.find('/', from)) != std::string::npos; from = slash + 1) {
        const std::string component = name.substr(from, slash - from);
        if (::mkdirat(folder.descriptor(), component.c_str(), 0777) != 0 && errno != EEXIST)
            throw errnoError(errno, "cannot make a folder", reported);
        FileHandle next(::openat(folder.descriptor(), component.c_str(),
                                 O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!next) throw errnoError(errno, "cannot open a folder", reported);
        folder = std::move(next);
    }
    return folder;
}

}  // namespace

struct ZipArchive::Core {
    Core(const fs::path& archive, ErrorKind errorKind, const ZipLimits& theLimits);

    [[noreturn]] void refuse(const std::string& rule, const std::string& entry = {}) const {
        // What the disk did not give is no fault of the archive.
        if (stream.failure() != 0) throw errnoError(stream.failure(), "cannot read", path, kind);
        throw Error(kind, rule, path, printableName(entry));
    }
    void list();
    ZipEntry judgedEntry();
    void judgeSizes(const ZipEntry& entry, const unz_file_info64& info);
    void judgeLayout() const;
    void noteExtent(const ZipEntry& entry);
    void unpack(const ZipEntry& entry, const FileHandle& root, const ZipExtraction& extraction);
    void copyContent(const ZipEntry& entry, const FileHandle& target, const ZipExtraction& extraction);

    std::string path;
    ErrorKind kind;
    ZipLimits limits;
    FileHandle file;
    ZipStream stream;
    OpenArchive archive;
    std::vector<ZipEntry> entries;
    std::vector<ZipExtent> extents;
    ZipDirectoryPlace directory;
    ZipNameSet names;
    uint64_t totalBytes = 0, bytesDone = 0;
};

ZipArchive::Core::Core(const fs::path& source, ErrorKind errorKind, const ZipLimits& theLimits)
    : path(source.string()),
      kind(errorKind),
      limits(theLimits),
      file(openRegular(source, errorKind)),
      stream(file) {
    if (file.size() > limits.maxArchiveBytes)
        refuse("the archive is larger than " + std::to_string(limits.maxArchiveBytes) + " bytes");
    // The library reads what is cut off as zeros, and looks for an archive behind whatever stands before it.
    std::string fault;
    const auto place = findZipDirectory(file, fault);
    if (!place) refuse(fault);
    directory = *place;
    stream.replace(place->offset, directoryInShortForm(file, *place));
    archive.reset(unzOpen2_64(path.c_str(), stream.functions()));
    if (!archive) refuse("is no zip archive");
    list();
    judgeLayout();
}

void ZipArchive::Core::list() {
    unz_global_info64 global{};
    if (unzGetGlobalInfo64(archive.get(), &global) != UNZ_OK) refuse("is no zip archive");
    if (global.number_entry > limits.maxEntries)
        refuse("the archive holds more than " + std::to_string(limits.maxEntries) + " entries");
    if (global.number_entry == 0) return;
    int state = unzGoToFirstFile(archive.get());
    for (; state == UNZ_OK; state = unzGoToNextFile(archive.get())) entries.push_back(judgedEntry());
    if (state != UNZ_END_OF_LIST_OF_FILE) refuse("the archive's directory is damaged");
    // Thousands of small files may grow as much as a large one.
    if (totalBytes > limits.ratioFreeBytes && totalBytes / limits.maxRatio > file.size())
        refuse("the archive unpacks to more than " + std::to_string(limits.maxRatio) + " times its size");
}

ZipEntry ZipArchive::Core::judgedEntry() {
    unz_file_info64 info{};
    if (unzGetCurrentFileInfo64(archive.get(), &info, nullptr, 0, nullptr, 0, nullptr, 0) != UNZ_OK)
        refuse("the archive's directory is damaged");
    std::vector<char> buffer(info.size_filename + 1);
    if (unzGetCurrentFileInfo64(archive.get(), &info, buffer.data(), buffer.size(), nullptr, 0, nullptr, 0) !=
        UNZ_OK)
        refuse("the archive's directory is damaged");

    ZipEntry entry{std::string(buffer.data(), info.size_filename), info.uncompressed_size,
                   info.compressed_size};
    if (const auto fault = faultOfZipName(entry.name, limits)) refuse(*fault, entry.name);
    if (const auto fault = names.faultOfAdding(entry.name)) refuse(*fault, entry.name);
    if (!isPlain(info)) refuse("the entry is a link or a device", entry.name);
    if (info.flag & kEncryptedFlags) refuse("the entry is encrypted", entry.name);
    if (info.compression_method != kStored && info.compression_method != kDeflated)
        refuse("the entry is packed in an unknown way", entry.name);
    judgeSizes(entry, info);
    noteExtent(entry);
    return entry;
}

void ZipArchive::Core::judgeSizes(const ZipEntry& entry, const unz_file_info64& info) {
    if (entry.bytes > limits.maxEntryBytes)
        refuse("the entry unpacks to more than " + std::to_string(limits.maxEntryBytes) + " bytes",
               entry.name);
    totalBytes += entry.bytes;
    if (totalBytes > limits.maxTotalBytes)
        refuse("the archive unpacks to more than " + std::to_string(limits.maxTotalBytes) + " bytes",
               entry.name);
    // A part of its size is more, too.
    const uint64_t fewest = entry.bytes / limits.maxRatio + (entry.bytes % limits.maxRatio != 0);
    if (entry.bytes > limits.ratioFreeBytes && fewest > entry.packedBytes)
        refuse("the entry unpacks to more than " + std::to_string(limits.maxRatio) + " times its size, and " +
                   std::to_string(limits.ratioFreeBytes) + " bytes",
               entry.name);
    const bool folderWithContent = entry.isFolder() && entry.bytes > 0;
    const bool lyingStored = info.compression_method == kStored && entry.bytes != entry.packedBytes;
    if (folderWithContent || lyingStored) refuse("the entry's sizes contradict each other", entry.name);
}

void ZipArchive::Core::noteExtent(const ZipEntry& entry) {
    if (unzOpenCurrentFile(archive.get()) != UNZ_OK)
        refuse("the entry contradicts the archive's directory", entry.name);
    unzCloseCurrentFile(archive.get());
    std::string fault;
    std::string listed = stream.at(unzGetOffset64(archive.get()), kZipDirectoryEntryBytes);
    auto extent = findZipEntry(file, std::move(listed), entry.name, entry.packedBytes, fault);
    if (!extent) refuse(fault, entry.name);
    extents.push_back(std::move(*extent));
}

void ZipArchive::Core::judgeLayout() const {
    std::string entry;
    if (const auto fault = faultOfZipLayout(extents, directory.offset, entry)) refuse(*fault, entry);
}

void ZipArchive::Core::unpack(const ZipEntry& entry, const FileHandle& root,
                              const ZipExtraction& extraction) {
    const std::string reported = path + ": " + printableName(entry.name);
    const FileHandle folder = folderOf(root, entry.name, reported);
    if (entry.isFolder()) return;
    const std::string name = entry.name.substr(entry.name.rfind('/') + 1);
    const FileHandle target(::openat(folder.descriptor(), name.c_str(),
                                     O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!target) throw errnoError(errno, "cannot write", reported);
    if (unzOpenCurrentFile(archive.get()) != UNZ_OK) refuse("the entry is damaged", entry.name);
    copyContent(entry, target, extraction);
    if (unzCloseCurrentFile(archive.get()) != UNZ_OK) refuse("the entry's check sum is wrong", entry.name);
}

void ZipArchive::Core::copyContent(const ZipEntry& entry, const FileHandle& target,
                                   const ZipExtraction& extraction) {
    std::array<char, 1 << 16> buffer;
    uint64_t copied = 0;
    for (;;) {
        if (extraction.isCancelled && extraction.isCancelled())
            throw Error(ErrorKind::Cancelled, "cancelled", path);
        const int count = unzReadCurrentFile(archive.get(), buffer.data(), buffer.size());
        if (count < 0) refuse("the entry's data is damaged", entry.name);
        if (count == 0) break;
        writeAll(target, {buffer.data(), static_cast<size_t>(count)}, path);
        copied += static_cast<uint64_t>(count);
        bytesDone += static_cast<uint64_t>(count);
        if (extraction.progress) extraction.progress(bytesDone, totalBytes);
    }
    if (copied != entry.bytes) refuse("the entry holds another number of bytes than it states", entry.name);
}

ZipArchive::ZipArchive(const fs::path& archive, ErrorKind kind, const ZipLimits& limits)
    : core_(std::make_unique<Core>(archive, kind, limits)) {}

ZipArchive::~ZipArchive() = default;

const std::vector<ZipEntry>& ZipArchive::entries() const { return core_->entries; }

void ZipArchive::extract(const fs::path& folder, const ZipExtraction& extraction) {
    const FileHandle root = openFile(folder, O_RDONLY | O_DIRECTORY);
    if (!root) throw errnoError(errno, "cannot open the folder", folder.string());
    core_->bytesDone = 0;
    int state = unzGoToFirstFile(core_->archive.get());
    for (const ZipEntry& entry : core_->entries) {
        if (state != UNZ_OK) core_->refuse("the archive's directory is damaged");
        if (!extraction.wanted || extraction.wanted(entry)) core_->unpack(entry, root, extraction);
        state = unzGoToNextFile(core_->archive.get());
    }
}

}  // namespace platform
