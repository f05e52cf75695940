// Files that somebody sends, looked at once before they are kept.
#pragma once

#include <filesystem>
#include <stop_token>
#include <string>

namespace multiscene {

struct TakenIn {
    enum class Kind { Photo, Video, Sound };

    Kind kind = Kind::Photo;
    int width = 0, height = 0;   ///< pixels, upright; a sound has none
    double seconds = 0;          ///< a photo has none
    std::filesystem::path file;  ///< what is to be kept: a photo in the folder, else the very file
};

/// "photo", "video", "sound".
const char* nameOf(TakenIn::Kind kind);

/// Judges a file by its content and writes what is made of it into `folder`: of a photo its pixels
/// ("photo.jpg", or "photo.png" where it is transparent), of a photo or video "proxy.jpg", a small picture of
/// it. Throws platform::Error: Input for what is no photo, video or sound that can be played; Cancelled.
TakenIn takeIn(const std::filesystem::path& file, const std::filesystem::path& folder,
               const std::stop_token& stop);

}  // namespace multiscene
