// What a job plays: an installed template, a template's folder, a zip of one, or a scene-group file.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Model/MediaFormat.h"
#include "app/Model/UserInputList.h"
#include "app/template/TemplateFolder.h"
#include "group/SceneCatalogue.h"
#include "group/SceneGroup.h"
#include "platform/base/Value.h"
#include "platform/store/FileLock.h"
#include "playback/Playback.h"

namespace multiscene {

class JobFolder;

struct Playable {
    std::string name;
    std::filesystem::path file;    ///< NAME.plist, or the scene-group file; empty for an installed template
    std::filesystem::path folder;  ///< of the template or of the group file, absolute
    /// NAME with its NAME.plist; empty for a group file.
    std::filesystem::path templateFolder;
    std::optional<TemplateFolder> description;  ///< of a template whose own file has been read
    platform::Value groupFile;                  ///< the content of a group file
    /// Where the template lists no scenes: its own scene, under an identifier that starts with a character
    /// that no key holds. The values are those of a group file; the user's come on top. Its scenes are read
    /// when it is judged.
    SceneGroup group;
    bool isGroupFile = false;
    UserInputList inputs;               ///< none for a group file
    std::optional<MediaFormat> format;  ///< none for a group file
    std::string musicPath;              ///< complete; empty: no music
    std::shared_ptr<SceneCatalogue> catalogue;
    /// Keep the files of installed templates from being exchanged while they are played.
    std::vector<platform::FileLock> inUse;
};

/// Finds what `argument` names: a path (a template's folder, its NAME.plist, a zip, a scene-group file), else
/// the number or the name of a template that is installed or ships with the program. Opens the playback's
/// gate for its files; a template that is not installed is played from where it lies, its parent standing in
/// for the playback's scene folder. A zip is unpacked into the job's folder. Throws
/// platform::Error(Template), or Transient while an installed template is being replaced.
Playable openPlayable(const std::string& argument, const JobFolder& job, Playback& playback);

/// The template's folder to which a path leads: the folder, its NAME.plist, or a zip, which is unpacked into
/// the job's folder. None where nothing lies. Throws platform::Error(Template).
std::optional<std::filesystem::path> templateFolderAt(const std::string& argument, const JobFolder& job);
/// The same for whoever has no job's folder, and no zip.
std::optional<std::filesystem::path> templateFolderAt(const std::string& argument);

/// Unpacks a zip into the job's folder and returns the one template folder in it. Throws
/// platform::Error(Template).
std::filesystem::path unpackTemplate(const std::filesystem::path& archive, const JobFolder& job);

/// A scene-group file, played against the catalogue of the data home. Throws platform::Error(Template).
Playable openSceneGroupFile(const std::filesystem::path& file, Playback& playback);

}  // namespace multiscene
