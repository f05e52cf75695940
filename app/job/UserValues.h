// From what the user gave to the user media map of a scene group.
#pragma once

#include <stop_token>
#include <string>
#include <vector>

#include "app/job/JobInputs.h"
#include "app/job/Playable.h"
#include "platform/base/FileGate.h"
#include "platform/base/Value.h"

namespace multiscene {

class PreparedFiles;

struct UserValues {
    /// Each value under its key alone and under key + identifier of every scene that has one.
    platform::Value::Dictionary map;
    /// Keys of the inputs that the template asks for and the user did not give; their texts are empty.
    std::vector<std::string> missing;
    std::vector<std::string> notes;  ///< what the user should know about the values
};

/// Judges and collects the user's values. Photos are turned upright, cropped to the shape that the template
/// asks for (where the user said, else so that faces stay) and prepared, no side longer than twice the
/// picture's. A video is played from where it lies; how, goes into the map beside its path
/// (UserFilm). How many frames the first one has goes in as "userVideo_totalFps", and for each scene that is
/// as long as its video, that video's. The gate is opened for every file given. Throws
/// platform::Error(Input): a key that the template does not ask for, a missing or unreadable file, a text far
/// over its limits, a video too short for its place; Error(Usage) for a key given twice; Error(Cancelled).
UserValues collectUserValues(const JobInputs& given, const Playable& playable, PreparedFiles& files,
                             const MediaFormat& format, platform::FileGate& gate,
                             const std::stop_token& stop);

}  // namespace multiscene
