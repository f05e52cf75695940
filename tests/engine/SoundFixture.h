#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace multiscene::testing {

/// A WAV file that holds one level (-1 to 1) throughout, so that a mix of it shows the volume itself.
inline std::string writeLevel(const std::filesystem::path& path, double seconds, double level) {
    constexpr uint32_t rate = 44100, bytesPerFrame = 2;
    const auto frames = static_cast<uint32_t>(seconds * rate);
    std::ofstream file(path, std::ios::binary);
    const auto put = [&](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) file.put(static_cast<char>(value >> 8 * i));
    };
    file << "RIFF";
    put(36 + frames * bytesPerFrame, 4);
    file << "WAVEfmt ";
    put(16, 4), put(1, 2), put(1, 2), put(rate, 4), put(rate * bytesPerFrame, 4), put(bytesPerFrame, 2),
        put(16, 2);
    file << "data";
    put(frames * bytesPerFrame, 4);
    for (uint32_t i = 0; i < frames; ++i) put(static_cast<uint32_t>(static_cast<int32_t>(level * 32767)), 2);
    return path.string();
}

}  // namespace multiscene::testing
