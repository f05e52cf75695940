// What the zip library reads an archive through: the file as it is, in blocks, and why it could not be read.
#pragma once

#include <minizip/ioapi.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/File.h"

namespace platform {

/// Refers to an open file. One thread.
class ZipStream {
  public:
    explicit ZipStream(const FileHandle& file);

    /// The library's functions on this stream, which must outlive the archive that is opened with them.
    zlib_filefunc64_def* functions() { return &functions_; }
    /// From now on the file reads as if `bytes` stood there.
    void replace(uint64_t offset, std::string bytes);
    /// What is read at some place; fewer bytes at the end of the file, and where it cannot be read.
    std::string at(uint64_t offset, uint64_t count);
    /// The errno value of the first read that failed, which the library takes for an archive that is damaged;
    /// else 0.
    int failure() const { return failure_; }

  private:
    static void* open(void* stream, const void* name, int mode);
    static uLong read(void* self, void* stream, void* bytes, uLong count);
    static ZPOS64_T tell(void* self, void* stream);
    static long seek(void* self, void* stream, ZPOS64_T offset, int origin);
    static int close(void* self, void* stream);
    static int error(void* self, void* stream);

    uint64_t copy(char* bytes, uint64_t count);
    bool loadBlock();

    const FileHandle& file_;
    uint64_t size_, position_ = 0, blockStart_ = 0;
    std::vector<char> block_;
    std::string replacement_;
    uint64_t replacedAt_ = 0;
    int failure_ = 0;
    zlib_filefunc64_def functions_{};
};

}  // namespace platform
