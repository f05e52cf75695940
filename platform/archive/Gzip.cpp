#include "platform/archive/Gzip.h"

#include <zlib.h>

#include <limits>

namespace platform {

namespace {

constexpr int gzipOnly = 16 + MAX_WBITS;
constexpr size_t pieceBytes = 64 << 10;

struct Inflater {
    z_stream stream{};
    Inflater() { ready = inflateInit2(&stream, gzipOnly) == Z_OK; }
    ~Inflater() {
        if (ready) inflateEnd(&stream);
    }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    bool ready = false;
};

}  // namespace

bool isGzip(std::span<const uint8_t> bytes) {
    return bytes.size() >= 2 && bytes[0] == 0x1f && bytes[1] == 0x8b;
}

std::vector<uint8_t> inflateGzip(std::span<const uint8_t> bytes, const std::string& name, uint64_t maxBytes,
                                 ErrorKind kind) {
    Inflater inflater;
    if (!inflater.ready) throw Error(ErrorKind::Transient, "out of memory", name);
    if (bytes.size() > std::numeric_limits<uInt>::max()) throw Error(kind, "is too large", name);
    z_stream& stream = inflater.stream;
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    std::vector<uint8_t> result, piece(pieceBytes);
    for (;;) {
        stream.next_out = piece.data();
        stream.avail_out = static_cast<uInt>(piece.size());
        const int state = inflate(&stream, Z_NO_FLUSH);
        result.insert(result.end(), piece.data(), stream.next_out);
        if (result.size() > maxBytes)
            throw Error(kind, "inflates to more than " + std::to_string(maxBytes >> 20) + " MiB", name);
        if (state == Z_STREAM_END) {
            if (!isGzip({stream.next_in, stream.avail_in})) return result;
            inflateReset(&stream);
        } else if (state != Z_OK) {
            throw Error(kind, "is a damaged gzip file", name);
        }
    }
}

}  // namespace platform
