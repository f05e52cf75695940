// Puts the silent film and its sound together without encoding anything again.
#pragma once

#include <filesystem>
#include <stop_token>

namespace platform {

/// Copies the first video track of `video` and the first audio track of `audio` into a new MP4 file at
/// `output`, with the index at its front. Picture times stay exactly as they are (a film that starts at 1/fps
/// still does), the encoded data stays bit for bit the same, and the same inputs always give the same file.
/// All of the film is kept, and the sound up to the end of the film. Throws Error: Transient for a full disk,
/// Cancelled when `stop` was requested, else Failed; no output file is left then.
void joinVideoAndAudio(const std::filesystem::path& video, const std::filesystem::path& audio,
                       const std::filesystem::path& output, std::stop_token stop = {});

}  // namespace platform
