// PVRTC, the block compression of PVR textures, decoded by the processor: no desktop driver takes it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace platform {

enum class PvrtcBits { Two = 2, Four = 4 };

/// Bytes of one compressed level: at least two by two blocks, 32 bytes.
uint64_t pvrtcLevelBytes(int width, int height, PvrtcBits bits);

/// Decodes one level into RGBA rows, top row first as stored. Width and height are powers of two. `withAlpha`
/// false is the RGB variant: alpha is 255 throughout. Empty when the size is not allowed or `data` holds
/// fewer bytes than the level needs.
std::vector<uint8_t> decodePvrtc(std::span<const uint8_t> data, int width, int height, PvrtcBits bits,
                                 bool withAlpha);

}  // namespace platform
