#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/base/Value.h"
#include "platform/image/PhotoCrop.h"

namespace multiscene {

/// What the user gives a template, as the command line says it.
struct JobInputs {
    struct Given {
        std::string key, value;
    };

    /// Which part of the photo of that key is shown.
    struct PhotoPart {
        std::string key;
        platform::PhotoCrop crop;
    };

    std::vector<Given> texts;   ///< value: the text itself
    std::vector<Given> photos;  ///< value: a file
    std::vector<Given> videos;  ///< value: a file
    std::vector<PhotoPart> photoParts;
    std::vector<Given> videoVolumes;  ///< value: a number from 0 to 1, of the video's own sound
    std::vector<Given> videoStarts;   ///< value: seconds into the video, where it begins
    /// A JSON object from key to text, number, path, or a dictionary of "file" and what is wanted of it;
    /// empty: none.
    std::filesystem::path mediaFile;
    platform::Value media;  ///< the same, as it is; paths are absolute, and what it says wins
};

}  // namespace multiscene
