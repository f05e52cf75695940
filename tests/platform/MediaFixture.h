// What the media tests share: a folder of their own, painted frames, sound made of numbers, and a look at the
// packets of a file.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "platform/base/File.h"
#include "platform/base/Paths.h"
#include "platform/media/PixelBuffer.h"
#include "platform/media/VideoWriter.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/platform/WavBytes.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace platform {

struct Colour {
    int red, green, blue;
};
inline constexpr Colour kRed{200, 40, 40}, kGreen{40, 200, 40}, kBlue{40, 40, 200}, kGrey{128, 128, 128};
using Corners = std::array<Colour, 4>;  ///< top left, top right, bottom left, bottom right
inline constexpr Corners kCorners{kRed, kGreen, kBlue, kGrey};

/// Four quarters of one colour each, as they are seen.
inline void paint(PixelBuffer& picture, const Corners& corners) {
    for (int y = 0; y < picture.height(); ++y) {
        uint8_t* row = picture.data() + picture.stride() * y;
        for (int x = 0; x < picture.width(); ++x) {
            const Colour& colour = corners[(2 * y >= picture.height()) * 2 + (2 * x >= picture.width())];
            row[4 * x + 2] = static_cast<uint8_t>(colour.red);
            row[4 * x + 1] = static_cast<uint8_t>(colour.green);
            row[4 * x] = static_cast<uint8_t>(colour.blue);
            row[4 * x + 3] = 255;
        }
    }
}

template <class Picture>
void expectColour(const Picture& picture, int x, int y, const Colour& expected, int tolerance = 8) {
    const uint8_t* pixel = picture.data() + y * picture.stride() + 4 * x;
    EXPECT_NEAR(pixel[2], expected.red, tolerance) << "red at " << x << "," << y;
    EXPECT_NEAR(pixel[1], expected.green, tolerance) << "green at " << x << "," << y;
    EXPECT_NEAR(pixel[0], expected.blue, tolerance) << "blue at " << x << "," << y;
}

template <class Picture>
void expectCorners(const Picture& picture, const Corners& corners) {
    for (int i = 0; i < 4; ++i)
        expectColour(picture, picture.width() * (i % 2 ? 3 : 1) / 4, picture.height() * (i / 2 ? 3 : 1) / 4,
                     corners[static_cast<size_t>(i)]);
}

struct PacketLine {
    int64_t pts, duration;
    std::string bytes;
    bool operator==(const PacketLine&) const = default;
};

class MediaFolder : public ::testing::Test {
  protected:
    std::string path(const std::string& name) const { return (folder / name).string(); }
    static FileHandle open(const std::string& path) {
        return FileHandle(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    }
    static std::string bytesOf(const std::string& path) {
        const auto bytes = readFile(path, 1 << 30);
        return {bytes.begin(), bytes.end()};
    }
    std::string write(const std::string& name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }

    /// A film of `frames` pictures, the first stamped 1/fps, whose grey corner brightens with every picture.
    std::string makeFilm(const std::string& name, int frames, VideoWriter::Settings settings) const {
        settings.path = path(name);
        VideoWriter writer(settings);
        for (int i = 0; i < frames; ++i) {
            PixelBufferPool::Pointer picture = writer.takeBuffer();
            Corners corners = kCorners;
            corners[3] = greyOf(i);
            paint(*picture, corners);
            EXPECT_TRUE(writer.append(std::move(picture), i + 1));
        }
        EXPECT_EQ(writer.finish(), VideoWriter::State::Completed);
        return path(name);
    }
    static Colour greyOf(int frame) {
        const int level = 20 + frame * 15 % 230;
        return {level, level, level};
    }
    static VideoWriter::Settings small(int width = 64, int height = 48, int framesPerSecond = 25) {
        VideoWriter::Settings settings;
        settings.width = width;
        settings.height = height;
        settings.framesPerSecond = framesPerSecond;
        settings.bitRate = 4000000;
        return settings;
    }

    /// A 16-bit WAV file of `frames` sample frames, each given by `sample(frame, channel)` from -1 to 1.
    std::string makeSound(const std::string& name, int rate, int channels, int64_t frames,
                          const std::function<double(int64_t, int)>& sample) const {
        return write(name,
                     test::wav(static_cast<uint32_t>(rate), static_cast<uint32_t>(channels), frames, sample));
    }

    /// The packets of the first track of that type, with times in 1/timescale as the file has them.
    static std::vector<PacketLine> packetsOf(const std::string& path, AVMediaType type, int timescale) {
        AVFormatContext* input = nullptr;
        std::vector<PacketLine> lines;
        if (avformat_open_input(&input, path.c_str(), nullptr, nullptr) < 0) return lines;
        avformat_find_stream_info(input, nullptr);
        AVPacket* packet = av_packet_alloc();
        while (av_read_frame(input, packet) >= 0) {
            const AVStream* stream = input->streams[packet->stream_index];
            if (stream->codecpar->codec_type == type)
                lines.push_back(
                    {av_rescale_q(packet->pts, stream->time_base, {1, timescale}),
                     av_rescale_q(packet->duration, stream->time_base, {1, timescale}),
                     std::string(reinterpret_cast<char*>(packet->data), static_cast<size_t>(packet->size))});
            av_packet_unref(packet);
        }
        av_packet_free(&packet);
        avformat_close_input(&input);
        return lines;
    }

    const test::TemporaryFolder temporary;
    const std::filesystem::path folder = temporary.path();
};

}  // namespace platform
