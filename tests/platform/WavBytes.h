#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace platform::test {

/// A 16-bit WAV file of `frames` sample frames, each given by `level(frame, channel)` from -1 to 1.
inline std::string wav(uint32_t rate, uint32_t channels, int64_t frames,
                       const std::function<double(int64_t, int)>& level) {
    std::string file = "RIFF";
    const auto put = [&](uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) file += static_cast<char>(value >> 8 * i);
    };
    const uint32_t frameBytes = channels * 2, size = static_cast<uint32_t>(frames) * frameBytes;
    put(36 + size, 4);
    file += "WAVEfmt ";
    put(16, 4), put(1, 2), put(channels, 2), put(rate, 4), put(rate * frameBytes, 4), put(frameBytes, 2);
    put(16, 2);
    file += "data";
    put(size, 4);
    for (int64_t frame = 0; frame < frames; ++frame)
        for (uint32_t channel = 0; channel < channels; ++channel)
            put(static_cast<uint32_t>(static_cast<int32_t>(level(frame, static_cast<int>(channel)) * 32767)),
                2);
    return file;
}

}  // namespace platform::test
