#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/platform/WavBytes.h"

namespace multiscene::testing {

/// A WAV file that holds one level (-1 to 1) throughout, so that a mix of it shows the volume itself.
inline std::string writeLevel(const std::filesystem::path& path, double seconds, double level) {
    std::ofstream(path, std::ios::binary) << platform::test::wav(
        44100, 1, static_cast<int64_t>(seconds * 44100), [level](int64_t, int) { return level; });
    return path.string();
}

}  // namespace multiscene::testing
