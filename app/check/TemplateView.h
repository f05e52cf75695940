// A template and its group laid out for the rules that judge them.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "app/check/SceneView.h"

namespace multiscene {

/// The scenes that are played one after another: a scene-group file, or the group of a template.
struct GroupView {
    std::string file;
    std::string keyPath;  ///< of the list of entries; empty when the template plays its own scene alone
    platform::Value::Array entries;
    /// What the catalogue says of each scene that the group may use, by number.
    std::map<int64_t, SceneView> scenes;
    /// Scenes that the catalogue has and whose files cannot be read.
    std::set<int64_t> unreadable;
    /// Keys under which the user gives values.
    std::set<std::string> userKeys;
    std::shared_ptr<MediaReader> media;

    Playback& playback() const { return media->playback(); }

    /// "sceneIdentifier" of all entries that have one.
    std::set<std::string> identifiers() const;
    /// The scene with this number, or none.
    const SceneView* scene(int64_t number) const;
};

struct TemplateView {
    std::string file;  ///< NAME/NAME.plist
    std::string name;
    platform::Value description;
    GroupView group;

    /// The template's folder; ends in "/".
    std::string folder() const { return file.substr(0, file.rfind('/') + 1); }
    const platform::Value::Array& records() const { return description.array("installScenes"); }
    /// The input description of the first record.
    const platform::Value& inputs() const;
};

}  // namespace multiscene
