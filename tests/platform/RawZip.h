// Builds archives byte by byte, so that each of their numbers can lie.
#pragma once

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace platform::test {

struct RawZipEntry {
    std::string name, content;
    bool deflated = false;
    uint16_t flags = 0x0800;
    uint16_t madeBy = 3 << 8 | 20;
    uint32_t mode = 0100644;
    std::optional<uint16_t> method = {};
    std::optional<uint32_t> crc = {}, packedBytes = {}, bytes = {}, localOffset = {};
    std::optional<std::string> localName = {};
    uint16_t disk = 0;
};

class RawZip {
  public:
    RawZip& add(const RawZipEntry& entry) {
        const uint32_t offset = entry.localOffset.value_or(static_cast<uint32_t>(data_.size()));
        const std::string packed = entry.deflated ? deflated(entry.content) : entry.content;
        if (!entry.localOffset) {
            number(data_, 0x04034b50, 4);
            describe(data_, entry, packed);
            data_ += entry.localName.value_or(entry.name) + packed;
        }
        number(directory_, 0x02014b50, 4);
        number(directory_, entry.madeBy, 2);
        describe(directory_, entry, packed);
        number(directory_, 0, 2);  // comment
        number(directory_, entry.disk, 2);
        number(directory_, 0, 2);  // internal attributes
        number(directory_, entry.mode << 16, 4);
        number(directory_, offset, 4);
        directory_ += entry.name;
        ++count_;
        return *this;
    }

    /// Bytes that belong to no entry.
    RawZip& addBytes(const std::string& bytes) {
        data_ += bytes;
        return *this;
    }

    /// What comes before the directory.
    const std::string& entriesAlone() const { return data_; }

    std::string bytes(uint16_t disk = 0) const {
        std::string result = data_ + directory_;
        number(result, 0x06054b50, 4);
        number(result, disk, 2);
        number(result, 0, 2);
        number(result, count_, 2);
        number(result, count_, 2);
        number(result, directory_.size(), 4);
        number(result, data_.size(), 4);
        number(result, 0, 2);
        return result;
    }

  private:
    static void number(std::string& target, uint64_t value, int bytes) {
        for (int index = 0; index < bytes; ++index) target += static_cast<char>(value >> (8 * index) & 0xff);
    }

    /// The fields that the local header and the directory share.
    static void describe(std::string& target, const RawZipEntry& entry, const std::string& packed) {
        const auto* content = reinterpret_cast<const Bytef*>(entry.content.data());
        const auto crc = static_cast<uint32_t>(crc32(0, content, static_cast<uInt>(entry.content.size())));
        number(target, 20, 2);
        number(target, entry.flags, 2);
        number(target, entry.method.value_or(entry.deflated ? 8 : 0), 2);
        number(target, 0x00210000, 4);
        number(target, entry.crc.value_or(crc), 4);
        number(target, entry.packedBytes.value_or(static_cast<uint32_t>(packed.size())), 4);
        number(target, entry.bytes.value_or(static_cast<uint32_t>(entry.content.size())), 4);
        number(target, entry.name.size(), 2);
        number(target, 0, 2);
    }

    static std::string deflated(const std::string& content) {
        z_stream stream{};
        deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
        std::string result(deflateBound(&stream, static_cast<uLong>(content.size())), '\0');
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
        stream.avail_in = static_cast<uInt>(content.size());
        stream.next_out = reinterpret_cast<Bytef*>(result.data());
        stream.avail_out = static_cast<uInt>(result.size());
        ::deflate(&stream, Z_FINISH);
        result.resize(stream.total_out);
        deflateEnd(&stream);
        return result;
    }

    std::string data_, directory_;
    uint64_t count_ = 0;
};

}  // namespace platform::test
