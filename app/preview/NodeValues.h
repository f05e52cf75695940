// Which of the user's values can be exchanged while a scene is held, and how.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "group/SceneGroup.h"
#include "playback/RenderDriver.h"

namespace multiscene {

class QVObjectContainer3D;

/// The key of the user's values that a node shows as its text or picture; empty: none that it could load
/// again.
std::string shownKeyOf(const QVObjectContainer3D& node);

/// Knows of a group which values do no more than say what nodes show: their text or picture.
class NodeValues {
  public:
    NodeValues() = default;
    explicit NodeValues(const SceneGroup& group);

    /// The keys of the nodes that show what differs between two maps of values; none where more than that
    /// hangs on a difference, or where a frame shows more than its own nodes.
    std::optional<std::set<std::string>> changedKeys(const platform::Value& before,
                                                     const platform::Value& after) const;

  private:
    std::string keyOf(const std::string& mapKey) const;

    bool isExchangeable_ = false;
    std::set<std::string> shown_;        ///< keys that nodes show
    std::set<std::string> used_;         ///< every other text of the scenes: keys may be among them
    std::set<std::string> identifiers_;  ///< of scenes
};

/// The nodes of the scenes that are played load again what they show of these keys, as far as they have
/// begun. Render queue, between a frame's matrices and its drawing, or between two frames.
void reloadNodes(const RenderDriver& driver, const std::set<std::string>& keys);

}  // namespace multiscene
