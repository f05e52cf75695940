// Encodes the pictures that `multiscene frames` wrote, alone: what a video costs when nothing is rendered.
// Usage: encode-frames FOLDER FPS BITRATE PRESET OUT.mp4
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include <fcntl.h>
#include <time.h>

#include "platform/base/Clock.h"
#include "platform/image/ImageDecoder.h"
#include "platform/media/VideoWriter.h"

namespace {

namespace fs = std::filesystem;

double processCpuSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::vector<platform::Bitmap> decodedPictures(const fs::path& folder) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(folder)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    std::vector<platform::Bitmap> pictures;
    for (const fs::path& file : files) {
        const platform::FileHandle handle(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
        pictures.push_back(platform::decodeImage(handle, {.source = {.name = file.string()}}));
    }
    return pictures;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 6) {
        std::fprintf(stderr, "usage: %s FOLDER FPS BITRATE PRESET OUT.mp4\n", arguments[0]);
        return 2;
    }
    try {
        const std::vector<platform::Bitmap> pictures = decodedPictures(arguments[1]);
        if (pictures.empty()) return 1;
        const double wall = platform::monotonicSeconds(), cpu = processCpuSeconds();
        platform::VideoWriter writer({.path = arguments[5],
                                      .width = pictures.front().width,
                                      .height = pictures.front().height,
                                      .framesPerSecond = std::atoi(arguments[2]),
                                      .bitRate = std::atoi(arguments[3]),
                                      .preset = arguments[4]});
        int64_t frame = 0;
        for (const platform::Bitmap& picture : pictures) {
            auto buffer = writer.takeBuffer();
            std::memcpy(buffer->data(), picture.rgba.data(), buffer->size());
            for (size_t red = 0; red < buffer->size(); red += 4)
                std::swap(buffer->data()[red], buffer->data()[red + 2]);
            writer.append(std::move(buffer), ++frame);
        }
        writer.finish();
        const auto statistics = writer.statistics();
        std::printf(
            "{\"frames\":%zu,\"wallSeconds\":%.3f,\"cpuSeconds\":%.3f,\"convertSeconds\":%.3f,"
            "\"encodeSeconds\":%.3f}\n",
            pictures.size(), platform::monotonicSeconds() - wall, processCpuSeconds() - cpu,
            statistics.convertSeconds, statistics.encodeSeconds);
    } catch (const platform::Error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return error.exitCode();
    }
    return 0;
}
