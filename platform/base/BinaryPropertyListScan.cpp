#include "platform/base/BinaryPropertyListScan.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace platform {

namespace {

constexpr size_t headerSize = 8;
constexpr size_t trailerSize = 32;
constexpr int maxDepth = 1000;  // of this scan's own recursion
constexpr uint64_t saturation = UINT64_MAX / 4;

enum class State : uint8_t { Unseen, Open, Done };

struct Shape {
    State state = State::Unseen;
    int depth = 0;
    uint64_t values = 0, bytes = 0;
};

class Scanner {
  public:
    explicit Scanner(std::span<const uint8_t> bytes) : bytes_(bytes) {}

    BinaryPropertyListShape scan(uint64_t maxObjects) {
        if (!readTrailer()) return {};
        if (objectCount_ > maxObjects) return {true, 0, objectCount_, 0};
        shapes_.resize(objectCount_);
        const Shape* root = visit(rootObject_, 0);
        if (!root) return {};
        return {true, root->depth, root->values, root->bytes};
    }

  private:
    bool readTrailer() {
        if (bytes_.size() < headerSize + trailerSize) return false;
        const size_t trailer = bytes_.size() - trailerSize;
        offsetSize_ = bytes_[trailer + 6];
        referenceSize_ = bytes_[trailer + 7];
        objectCount_ = bigEndian(trailer + 8, 8);
        rootObject_ = bigEndian(trailer + 16, 8);
        tableOffset_ = bigEndian(trailer + 24, 8);
        const bool sizesFit =
            offsetSize_ >= 1 && offsetSize_ <= 8 && referenceSize_ >= 1 && referenceSize_ <= 8;
        return sizesFit && tableOffset_ <= trailer &&
               objectCount_ <= (trailer - tableOffset_) / offsetSize_ && rootObject_ < objectCount_;
    }

    uint64_t bigEndian(size_t at, size_t size) const {
        uint64_t value = 0;
        for (size_t i = 0; i < size; ++i) value = value << 8 | bytes_[at + i];
        return value;
    }

    const Shape* visit(uint64_t object, int level) {
        if (object >= objectCount_ || level > maxDepth) return nullptr;
        Shape& shape = shapes_[object];
        if (shape.state == State::Done) return &shape;
        if (shape.state == State::Open) return nullptr;  // a cycle
        shape.state = State::Open;
        Shape total{State::Done, 0, 1, 0};
        if (!visitChildren(object, level, total)) return nullptr;
        shape = total;
        return &shape;
    }

    bool visitChildren(uint64_t object, int level, Shape& total) {
        const uint64_t at = bigEndian(tableOffset_ + object * offsetSize_, offsetSize_);
        if (at < headerSize || at >= tableOffset_) return false;
        const int kind = bytes_[at] >> 4;
        const bool isData = kind == 0x4, isText = kind == 0x5 || kind == 0x6;
        const bool isContainer = kind == 0xA || kind == 0xD;
        if (!isData && !isText && !isContainer) return true;
        uint64_t count = bytes_[at] & 0xF, first = at + 1;
        if (count == 0xF && !readCount(first, count)) return false;
        if (!isContainer) total.bytes = count;
        if (isData) return count <= tableOffset_ - first;
        if (isText) return textIsWhole(first, count, kind == 0x6 ? 2 : 1);
        if (kind == 0xD) count *= 2;
        if (count > (tableOffset_ - first) / referenceSize_) return false;
        for (uint64_t i = 0; i < count; ++i) {
            const Shape* child = visit(bigEndian(first + i * referenceSize_, referenceSize_), level + 1);
            if (!child) return false;
            total.depth = std::max(total.depth, child->depth);
            total.values = std::min(total.values + child->values, saturation);
            total.bytes = std::min(total.bytes + child->bytes, saturation);
        }
        total.depth += 1;
        return true;
    }

    /// The parser ends the program at a text with a zero in it.
    bool textIsWhole(uint64_t at, uint64_t count, size_t unitSize) const {
        if (count > (tableOffset_ - at) / unitSize) return false;
        for (uint64_t i = 0; i < count; ++i)
            if (bigEndian(at + i * unitSize, unitSize) == 0) return false;
        return true;
    }

    /// A count of fifteen or more follows as an integer object of its own.
    bool readCount(uint64_t& at, uint64_t& count) const {
        if (at >= tableOffset_ || bytes_[at] >> 4 != 0x1) return false;
        const size_t size = size_t{1} << (bytes_[at] & 0xF);
        if (size > 8 || at + 1 + size > tableOffset_) return false;
        count = bigEndian(at + 1, size);
        at += 1 + size;
        return count < bytes_.size();
    }

    std::span<const uint8_t> bytes_;
    size_t offsetSize_ = 0, referenceSize_ = 0;
    uint64_t objectCount_ = 0, rootObject_ = 0, tableOffset_ = 0;
    std::vector<Shape> shapes_;
};

}  // namespace

bool isBinaryPropertyList(std::span<const uint8_t> bytes) {
    return bytes.size() >= headerSize && std::memcmp(bytes.data(), "bplist", 6) == 0;
}

BinaryPropertyListShape scanBinaryPropertyList(std::span<const uint8_t> bytes, uint64_t maxObjects) {
    return Scanner(bytes).scan(maxObjects);
}

}  // namespace platform
