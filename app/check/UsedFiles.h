#pragma once

#include <optional>
#include <string>

#include "app/check/Finding.h"
#include "playback/Playback.h"

namespace multiscene {

/// Judges a path of a scene file: whether it resolves to anything, and whether the playback's gate opens it.
/// `place` carries file and key path; its text is filled in. Nothing when all is well.
std::optional<Finding> judgeFileName(Playback& playback, const std::string& path,
                                     const std::string& sceneFolder, Finding place);

struct NamedFile {
    std::string path;  ///< complete; empty when the name is no path
    platform::FileGate::Opened opened;
    std::optional<Finding> finding;  ///< why it could not be opened
};

/// The same, for whoever reads the file.
NamedFile openFileName(Playback& playback, const std::string& path, const std::string& sceneFolder,
                       Finding place);

}  // namespace multiscene
