// A template as it lies on disk: a folder NAME with NAME/NAME.plist.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/Model/QVTempletDataModel.h"
#include "other/QVUtil.h"
#include "platform/base/PropertyListFaults.h"
#include "platform/base/Value.h"

namespace multiscene {

struct TemplateFolder {
    /// The background music of a template that names none.
    static constexpr const char* usualMusic = "bg-audio.mp3";

    std::string name;                                 ///< the folder's name
    std::filesystem::path folder;                     ///< absolute
    platform::Value description;                      ///< the content of NAME.plist
    std::vector<platform::PropertyListFault> faults;  ///< of NAME.plist, which reading passed over
    /// "installScenes"; the first is the template itself, the others are further scenes that it uses.
    std::vector<QVTempletDataModel> records;

    /// Lowest version of the program that can play it; 0: any.
    float minVersion() const { return description.real("minVersion"); }
    std::filesystem::path plistPath() const { return folder / (name + ".plist"); }
};

/// Reads and judges a template's own file. Throws Error(Template) naming the file and key: no such folder or
/// file, broken syntax, no "installScenes", a record without a number or scene file, a wrong type, one number
/// twice. The scene files themselves are not read.
TemplateFolder readTemplateFolder(const std::filesystem::path& folder);

/// The judgement of readTemplateFolder on a content that is already in memory; `file` is for messages.
std::vector<QVTempletDataModel> templateRecords(const platform::Value& description, const std::string& file);

/// The first record's names: "cName", "eName", "jName".
platform::Value namesInDescription(const platform::Value& description);

/// The first record's name in the user's language; empty when it has none.
std::string nameInDescription(const platform::Value& description);

/// The same, or the folder's name where it has none.
std::string displayName(const TemplateFolder& folder);

/// Throws Error(Template) unless the scene file and resource folder of every record lie in the template's own
/// folder: a record that points into another template would be played with that template's files, and would
/// outlive them. `scenePath`: the folder in which the template's folder is, or will be.
void requireOwnPaths(const TemplateFolder& folder, const std::string& scenePath = QVUtil::scenePath());

/// The template whose folder holds a stored scene file; empty for a file outside the scene folder.
std::string templateOwning(const std::string& scenePlistPath);

/// Whether a name may be a template's folder: one visible path component of UTF-8 without control
/// characters.
bool isTemplateName(const std::string& name);

}  // namespace multiscene
