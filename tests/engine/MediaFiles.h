// Pixels compared, pictures and films written on the spot.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/image/ImageWriter.h"
#include "platform/media/VideoWriter.h"

namespace multiscene::testing {

using Pixel = std::array<uint8_t, 4>;  // red, green, blue, alpha

/// Channels that differ by no more than `tolerance`.
inline ::testing::AssertionResult isNear(const Pixel& actual, const Pixel& expected, int tolerance = 1) {
    for (size_t i = 0; i < 4; ++i)
        if (std::abs(int(actual[i]) - int(expected[i])) > tolerance)
            return ::testing::AssertionFailure()
                   << ::testing::PrintToString(actual) << " is not " << ::testing::PrintToString(expected);
    return ::testing::AssertionSuccess();
}

/// Writes a PNG of `colors` in rows of `width`, top row first.
inline std::string writePicture(const std::filesystem::path& path, const std::vector<Pixel>& colors,
                                int width = 1) {
    platform::writePng(path, {width, int(colors.size()) / width, colors[0].data(), width * 4});
    return path.string();
}

inline int levelOf(int picture) { return 40 + picture * 20; }

/// A film of one grey level a picture: picture i has the level levelOf(i).
inline std::string writeFilm(const std::filesystem::path& path, int frames, int framesPerSecond = 30) {
    platform::VideoWriter writer({.path = path,
                                  .width = 32,
                                  .height = 32,
                                  .framesPerSecond = framesPerSecond,
                                  .bitRate = 2000000,
                                  .preset = "ultrafast"});
    for (int i = 0; i < frames; ++i) {
        auto shown = writer.takeBuffer();
        for (size_t byte = 0; byte < shown->size(); ++byte)
            shown->data()[byte] = static_cast<uint8_t>(byte % 4 == 3 ? 255 : levelOf(i));
        EXPECT_TRUE(writer.append(std::move(shown), i + 1));
    }
    EXPECT_EQ(writer.finish(), platform::VideoWriter::State::Completed);
    return path.string();
}

}  // namespace multiscene::testing
