#pragma once

#include <memory>
#include <string>

#include "core/QVObject3DFpsBase.h"

namespace multiscene {

/// Builds nodes from their dictionaries.
class SceneNodes {
  public:
    /// A configured node of the dictionary's "type", belonging to `scene` but not yet added to it. `keyPath`:
    /// where the dictionary stands in the scene file. An unknown type is an Error(Template).
    static std::shared_ptr<QVObject3DFpsBase> object3DWithInfo(const platform::Value& info,
                                                               const std::shared_ptr<QVScene3D>& scene,
                                                               const std::string& keyPath = {});
    /// The key path of the element `index` of a list.
    static std::string keyPathOf(const std::string& list, size_t index) {
        return list + "[" + std::to_string(index) + "]";
    }
};

}  // namespace multiscene
