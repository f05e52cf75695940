// How a film of the user is shown. Kept among the user's values, beside the film's path.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// The "sourceType" of a scene's record whose length is that of the user's film, and the key under which the
/// user's values keep that length, in frames.
inline constexpr int64_t kLengthFromUserVideo = 7;
inline constexpr const char* kUserVideoFrames = "userVideo_totalFps";

class QVMultiSceneRenderShareSettings;

struct UserFilm {
    /// Rate of the video that is made. 0: the file is none that the user gave, and is shown a picture a
    /// frame.
    int32_t framesPerSecond = 0;
    int32_t aspectWidth = 0, aspectHeight = 0;   ///< the shape it is cropped to; 0: its own
    std::optional<float> volume = std::nullopt;  ///< of its sound, 0 to 1; none: what the scene says
    int64_t firstFrame = 0;                      ///< at that rate: the film begins there, its sound too

    /// The film under `key` in the scene with this identifier.
    static UserFilm of(const std::string& key, const std::string& sceneIdentifier,
                       const QVMultiSceneRenderShareSettings& settings);

    /// Where the user's values keep it for a film under `key`; an identifier goes behind it as behind any
    /// key.
    static std::string mapKey(const std::string& key);
    platform::Value value() const;
};

}  // namespace multiscene
