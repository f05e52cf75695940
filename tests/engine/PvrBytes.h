// PVR texture files made in memory.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace multiscene::testing {

using Bytes = std::vector<uint8_t>;

struct PvrHeader {
    uint32_t width = 2, height = 2, mipMaps = 0, flags = 18, bitsPerPixel = 32, alphaMask = 0,
             tag = 0x21525650, surfaces = 1, length = 52;
};

inline Bytes pvr(const PvrHeader& header, const Bytes& data) {
    const std::array<uint32_t, 13> fields{header.length,
                                          header.height,
                                          header.width,
                                          header.mipMaps,
                                          header.flags,
                                          0,
                                          header.bitsPerPixel,
                                          0,
                                          0,
                                          0,
                                          header.alphaMask,
                                          header.tag,
                                          header.surfaces};
    Bytes file;
    for (const uint32_t field : fields)
        for (int shift = 0; shift < 32; shift += 8) file.push_back(uint8_t(field >> shift));
    file.insert(file.end(), data.begin(), data.end());
    return file;
}

}  // namespace multiscene::testing
