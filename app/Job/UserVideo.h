#pragma once

#include <cstdint>
#include <filesystem>
#include <stop_token>

namespace multiscene {

struct UserVideo {
    std::filesystem::path file;
    int64_t frames = 0;
};

/// The user's video with a picture for every frame of the template: the file itself when it has that rate,
/// else a copy at `converted` with pictures repeated or left out, its length kept. Throws platform::Error:
/// Input when it is no readable video, Cancelled when a stop was requested.
UserVideo userVideoAtRate(const std::filesystem::path& video, int framesPerSecond,
                          const std::filesystem::path& converted, const std::stop_token& stop);

}  // namespace multiscene
