#pragma once

#include <cstdint>
#include <filesystem>

#include "platform/pixels/Surface.h"

namespace multiscene {

/// Small pictures of a film while it is made, for who waits for it: "picture.jpg", the frame being drawn,
/// about once a second, and "poster.jpg", the one in its middle (without a known length: its first). One
/// thread.
class FramePictures {
  public:
    /// The folder exists. `frames` below 1: nobody knows.
    FramePictures(std::filesystem::path folder, int64_t frames)
        : folder_(std::move(folder)), frames_(frames) {}

    /// What cannot be written is left out: the film is what matters.
    void see(int64_t frame, const platform::Surface& picture);

  private:
    void write(const char* name, const platform::Surface& picture);

    const std::filesystem::path folder_;
    const int64_t frames_;
    double writtenAt_ = 0;
    bool hasFailed_ = false;
};

}  // namespace multiscene
