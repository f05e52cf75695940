// Where templates and their files live, path macros, and the "x,y,z" texts of scene files.
#pragma once

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Value.h"

namespace multiscene {

class QVUtil {
  public:
    /// Expands a path whose first component is a macro: "$(multiSceneRootROOT)", "$(multiSceneSceneROOT)",
    /// "$(multiSceneUserResourcesROOT)", "$(mainBundleResourcePathROOT)" or "$(MultiSceneTemplateROOT)".
    /// An absolute path is returned unchanged. Empty text, and a relative path without a macro, give an empty
    /// path: nothing is ever looked up in the working directory. Says nothing about whether the file exists.
    static std::string multiScenePathWithString(const std::string& path);
    /// With another folder for "$(multiSceneSceneROOT)"; ends in "/".
    static std::string multiScenePathWithString(const std::string& path, const std::string& scenePath);

    /// The macros of multiScenePathWithString.
    static std::vector<std::string_view> pathMacros();

    /// The text after the macro: every occurrence of `component` followed by "/" is removed.
    static std::string removingMacro(const std::string& path, std::string_view component);
    /// The text before the first "/".
    static std::string_view firstComponent(std::string_view path);

    /// Makes the folders of the data home and excludes them from backups. Throws platform::Error.
    static void createMultiSceneLocalPaths();
    /// Marks a folder for backup programs as not worth keeping; does nothing where the file system cannot.
    static void addSkipBackupAttributeToDirectory(const std::string& folder);

    /// Stores the comma-separated numbers of `text` in order, single precision. Pieces beyond `count` are
    /// ignored, the elements of missing pieces become 0; a piece that is no number is 0.
    static void getpagame(std::string_view text, float* data, int count);

    /// Folders of the data home; each ends in "/".
    static std::string multiSceneRootPath();
    static std::string scenePath();
    static std::string userResourcesPath();
    static std::string templatePath();
    static std::string dataPath();
};

/// The vector of a scene file's "x,y", "x,y,z" or "x,y,z,w"; anything else reads as zeros.
template <glm::length_t Count>
glm::vec<Count, float> vectorOf(const platform::Value& value) {
    glm::vec<Count, float> result(0);
    QVUtil::getpagame(value.stringValue(), &result.x, Count);
    return result;
}

}  // namespace multiscene
