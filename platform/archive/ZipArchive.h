// Reading zip archives from strangers. Everything about an archive is judged before the first file is made;
// an archive that breaks one rule is refused whole, and the message names the rule and the entry.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/archive/ZipLimits.h"
#include "platform/base/Error.h"

namespace platform {

struct ZipEntry {
    std::string name;  ///< UTF-8, parts separated by "/"; a folder ends in "/"
    uint64_t bytes = 0;
    uint64_t packedBytes = 0;

    bool isFolder() const { return name.back() == '/'; }
};

/// What extract() takes and whom it tells. Everything is optional.
struct ZipExtraction {
    std::function<bool(const ZipEntry&)> wanted = {};                       ///< all entries when absent
    std::function<void(uint64_t bytesDone, uint64_t bytes)> progress = {};  ///< after every piece of a file
    std::function<bool()> isCancelled = {};
};

/// An open archive. Not for use by two threads at a time.
class ZipArchive {
  public:
    /// Opens and judges. Refused, as an Error(kind): what is no archive, is cut off, or is a part of several;
    /// bytes before the archive or in it that belong to no entry; entries whose own name is another than the
    /// directory's; names that leave the folder, are absolute, hold drive letters, backslashes or control
    /// characters, or are not UTF-8; names given twice, also when they differ in case alone; links and
    /// devices; encrypted entries and unknown methods; entries that share data; everything beyond the limits.
    explicit ZipArchive(const std::filesystem::path& archive, ErrorKind kind = ErrorKind::Template,
                        const ZipLimits& limits = {});
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    /// In the order of the archive.
    const std::vector<ZipEntry>& entries() const;

    /// Unpacks below an existing folder that nobody else writes to. Nothing there is overwritten, no link is
    /// followed, files are made plain and unexecutable. They need not have reached the disk. Throws Error:
    /// wrong check sum or size (kind), a full disk (Transient), Cancelled; what was unpacked until then stays
    /// for the caller to remove.
    void extract(const std::filesystem::path& folder, const ZipExtraction& extraction = {});

  private:
    struct Core;
    std::unique_ptr<Core> core_;
};

}  // namespace platform
