#include "platform/archive/ZipLayout.h"

#include <unistd.h>

#include <algorithm>

#include "platform/archive/ZipNames.h"

namespace platform {

namespace {

constexpr uint64_t kEndRecordBytes = 22, kMaxCommentBytes = 0xffff;
constexpr uint64_t kLocatorBytes = 20, kLongEndRecordBytes = 56;
constexpr uint64_t kLocalHeaderBytes = 30;
constexpr uint64_t kLeastDescriptorBytes = 12, kMostDescriptorBytes = 24;
constexpr uint64_t kLongFormMark16 = 0xffff, kLongFormMark32 = 0xffffffff;
constexpr uint64_t kDescriptorFlag = 0x0008;
constexpr size_t kPackedBytesAt = 20, kPlainBytesAt = 24, kHeaderAt = 42;  // in an entry of the directory
constexpr uint64_t kLongFormField = 1, kNobodysField = 0xffff;
constexpr uint64_t kMostDirectoryBytes = 64 << 20;  // of as many entries as there may be, and more

/// Bytes of a file, read as the numbers of an archive: the lowest byte first.
class Bytes {
  public:
    /// Empty when the file does not hold them all.
    Bytes(const FileHandle& file, uint64_t offset, uint64_t count) : text_(count, '\0') {
        const int64_t read = readAt(file, text_.data(), count, offset);
        if (read < 0) throw errnoError(errno, "cannot read", file.name());
        if (read != static_cast<int64_t>(count)) text_.clear();
    }

    explicit Bytes(std::string text) : text_(std::move(text)) {}

    bool startsWith(std::string_view mark) const { return text_.starts_with(mark); }
    uint64_t number(size_t at, int bytes) const {
        uint64_t value = 0;
        for (int index = bytes - 1; index >= 0; --index)
            value = value << 8 | static_cast<unsigned char>(text_[at + static_cast<size_t>(index)]);
        return value;
    }
    void setNumber(size_t at, int bytes, uint64_t value) {
        for (int index = 0; index < bytes; ++index, value >>= 8)
            text_[at + static_cast<size_t>(index)] = static_cast<char>(value & 0xff);
    }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

/// What the two forms of the end record say alike.
struct EndRecord {
    uint64_t begin, disk, directoryDisk, entriesHere, entries, bytes, offset;
};

std::optional<EndRecord> shortEndRecord(const FileHandle& file) {
    const uint64_t size = file.size();
    if (size < kEndRecordBytes) return std::nullopt;
    const uint64_t tailBytes = std::min(size, kEndRecordBytes + kMaxCommentBytes);
    const Bytes tail(file, size - tailBytes, tailBytes);
    const size_t at = tail.text().rfind("PK\5\6");
    if (at == std::string::npos || tailBytes - at < kEndRecordBytes) return std::nullopt;
    if (tailBytes - at - kEndRecordBytes != tail.number(at + 20, 2)) return std::nullopt;
    return EndRecord{size - tailBytes + at,  tail.number(at + 4, 2),  tail.number(at + 6, 2),
                     tail.number(at + 8, 2), tail.number(at + 10, 2), tail.number(at + 12, 4),
                     tail.number(at + 16, 4)};
}

bool pointsToLongForm(const EndRecord& record) {
    return record.entries == kLongFormMark16 || record.bytes == kLongFormMark32 ||
           record.offset == kLongFormMark32;
}

/// The record in the form of large archives, which some programs write for small ones too.
std::optional<EndRecord> longEndRecord(const FileHandle& file, const EndRecord& shortForm) {
    if (shortForm.begin < kLocatorBytes + kLongEndRecordBytes) return std::nullopt;
    const uint64_t locatorAt = shortForm.begin - kLocatorBytes;
    const Bytes locator(file, locatorAt, kLocatorBytes);
    if (!locator.startsWith("PK\6\7") || locator.number(4, 4) != 0) return std::nullopt;
    const uint64_t begin = locator.number(8, 8);
    if (begin > locatorAt - kLongEndRecordBytes) return std::nullopt;
    const Bytes record(file, begin, kLongEndRecordBytes);
    if (!record.startsWith("PK\6\6") || record.number(4, 8) != locatorAt - begin - 12) return std::nullopt;
    return EndRecord{begin,
                     record.number(16, 4),
                     record.number(20, 4),
                     record.number(24, 8),
                     record.number(32, 8),
                     record.number(40, 8),
                     record.number(48, 8)};
}

/// Where the field of large archives lies among an entry's further ones, which are `bytes` long; nothing when
/// there is none.
std::optional<size_t> longFormField(const Bytes& directory, size_t fields, size_t bytes) {
    for (size_t at = fields; at + 4 <= fields + bytes; at += 4 + directory.number(at + 2, 2))
        if (directory.number(at, 2) == kLongFormField) return at;
    return std::nullopt;
}

/// True when a number has changed its place.
bool shortenEntry(Bytes& directory, size_t entry, size_t field, size_t fieldsEnd) {
    const size_t end = std::min<size_t>(field + 4 + directory.number(field + 2, 2), fieldsEnd);
    size_t at = field + 4;
    bool hasChanged = false;
    // In this order, and only those that are marked.
    for (const size_t number : {kPlainBytesAt, kPackedBytesAt, kHeaderAt}) {
        if (directory.number(entry + number, 4) != kLongFormMark32) continue;
        if (at + 8 > end || directory.number(at, 8) >= kLongFormMark32) break;
        directory.setNumber(entry + number, 4, directory.number(at, 8));
        hasChanged = true;
        at += 8;
    }
    if (hasChanged) directory.setNumber(field, 2, kNobodysField);
    return hasChanged;
}

}  // namespace

std::string directoryInShortForm(const FileHandle& file, const ZipDirectoryPlace& place) {
    if (place.bytes > kMostDirectoryBytes) return {};
    Bytes directory(file, place.offset, place.bytes);
    bool hasChanged = false;
    for (size_t at = 0; at + kZipDirectoryEntryBytes <= directory.text().size();) {
        const size_t fields = at + kZipDirectoryEntryBytes + directory.number(at + 28, 2);
        const size_t bytes = directory.number(at + 30, 2);
        if (fields + bytes > directory.text().size()) break;
        if (const auto field = longFormField(directory, fields, bytes))
            hasChanged = shortenEntry(directory, at, *field, fields + bytes) || hasChanged;
        at = fields + bytes + directory.number(at + 32, 2);
    }
    return hasChanged ? directory.text() : "";
}

std::optional<ZipDirectoryPlace> findZipDirectory(const FileHandle& file, std::string& fault) {
    auto record = shortEndRecord(file);
    fault = "is no zip archive, or is cut off";
    if (!record) return std::nullopt;
    const auto longForm = longEndRecord(file, *record);
    if (!longForm && pointsToLongForm(*record)) return std::nullopt;
    if (longForm) record = longForm;
    fault = "the archive is one part of several";
    if (record->disk != 0 || record->directoryDisk != 0 || record->entriesHere != record->entries)
        return std::nullopt;
    fault = "something stands before the archive or within it: its directory is not where it says";
    if (record->bytes > record->begin || record->offset != record->begin - record->bytes) return std::nullopt;
    return ZipDirectoryPlace{record->offset, record->bytes};
}

std::optional<ZipExtent> findZipEntry(const FileHandle& file, std::string entry, const std::string& name,
                                      uint64_t packedBytes, std::string& fault) {
    fault = "the archive's directory is damaged";
    const Bytes listed(std::move(entry));
    if (listed.text().size() < kZipDirectoryEntryBytes || !listed.startsWith("PK\1\2")) return std::nullopt;
    fault = "the entry lies in another part of the archive";
    if (listed.number(34, 2) != 0) return std::nullopt;

    const uint64_t begin = listed.number(kHeaderAt, 4);
    const Bytes header(file, begin, kLocalHeaderBytes);
    fault = "the entry contradicts the archive's directory";
    if (!header.startsWith("PK\3\4") || header.number(26, 2) != name.size()) return std::nullopt;
    fault = "the entry's own name differs from the one in the archive's directory";
    if (Bytes(file, begin + kLocalHeaderBytes, name.size()).text() != name) return std::nullopt;
    fault = "the entry lies outside the archive";
    const uint64_t data = begin + kLocalHeaderBytes + name.size() + header.number(28, 2);
    if (packedBytes > file.size() || data > file.size() - packedBytes) return std::nullopt;
    return ZipExtent{begin, data + packedBytes, (listed.number(8, 2) & kDescriptorFlag) != 0, name};
}

std::optional<std::string> faultOfZipLayout(std::vector<ZipExtent> extents, uint64_t directoryOffset,
                                            std::string& entry) {
    std::sort(extents.begin(), extents.end(),
              [](const ZipExtent& left, const ZipExtent& right) { return left.begin < right.begin; });
    extents.push_back({directoryOffset, directoryOffset, false, ""});
    ZipExtent before;
    for (const ZipExtent& each : extents) {
        entry = each.name.empty() ? before.name : each.name;
        if (each.begin < before.end && each.name.empty())
            return "the entry reaches into the archive's directory";
        if (each.begin < before.end)
            return "the entry shares its data with \"" + printableName(before.name) + "\"";
        const uint64_t between = each.begin - before.end;
        const bool isDescriptor =
            before.hasDescriptor && between >= kLeastDescriptorBytes && between <= kMostDescriptorBytes;
        if (between > 0 && !isDescriptor) return "bytes that belong to no entry stand before or behind it";
        before = each;
    }
    return std::nullopt;
}

}  // namespace platform
