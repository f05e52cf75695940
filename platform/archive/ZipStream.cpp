#include "platform/archive/ZipStream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace platform {

namespace {

constexpr uint64_t kBlockBytes = 1 << 16;

ZipStream& streamOf(void* self) { return *static_cast<ZipStream*>(self); }

}  // namespace

ZipStream::ZipStream(const FileHandle& file) : file_(file), size_(file.size()) {
    functions_.opaque = this;
    functions_.zopen64_file = open;
    functions_.zread_file = read;
    functions_.ztell64_file = tell;
    functions_.zseek64_file = seek;
    functions_.zclose_file = close;
    functions_.zerror_file = error;
}

void* ZipStream::open(void* stream, const void*, int) { return stream; }
int ZipStream::close(void*, void*) { return 0; }
int ZipStream::error(void* self, void*) { return streamOf(self).failure_ != 0; }
ZPOS64_T ZipStream::tell(void* self, void*) { return streamOf(self).position_; }

uLong ZipStream::read(void* self, void*, void* bytes, uLong count) {
    return static_cast<uLong>(streamOf(self).copy(static_cast<char*>(bytes), count));
}

long ZipStream::seek(void* self, void*, ZPOS64_T offset, int origin) {
    ZipStream& stream = streamOf(self);
    const uint64_t from = origin == ZLIB_FILEFUNC_SEEK_CUR   ? stream.position_
                          : origin == ZLIB_FILEFUNC_SEEK_END ? stream.size_
                                                             : 0;
    stream.position_ = from + offset;
    return 0;
}

void ZipStream::replace(uint64_t offset, std::string bytes) {
    replacedAt_ = offset;
    replacement_ = std::move(bytes);
    block_.clear();
}

std::string ZipStream::at(uint64_t offset, uint64_t count) {
    std::string bytes(count, '\0');
    position_ = offset;
    bytes.resize(copy(bytes.data(), count));
    return bytes;
}

uint64_t ZipStream::copy(char* bytes, uint64_t count) {
    uint64_t done = 0;
    while (done < count && position_ < size_ && loadBlock()) {
        const uint64_t into = position_ - blockStart_;
        const uint64_t some = std::min(count - done, block_.size() - into);
        std::memcpy(bytes + done, block_.data() + into, some);
        done += some;
        position_ += some;
    }
    return done;
}

/// Has the block with the position at hand; false where nothing can be read.
bool ZipStream::loadBlock() {
    if (position_ >= blockStart_ && position_ - blockStart_ < block_.size()) return true;
    block_.resize(kBlockBytes);
    blockStart_ = position_ - position_ % kBlockBytes;
    const int64_t count = readAt(file_, block_.data(), block_.size(), blockStart_);
    if (count < 0 && failure_ == 0) failure_ = errno;
    block_.resize(static_cast<size_t>(std::max<int64_t>(count, 0)));
    const uint64_t from = std::max(blockStart_, replacedAt_);
    const uint64_t to = std::min(blockStart_ + block_.size(), replacedAt_ + replacement_.size());
    if (from < to) replacement_.copy(block_.data() + (from - blockStart_), to - from, from - replacedAt_);
    return position_ - blockStart_ < block_.size();
}

}  // namespace platform
