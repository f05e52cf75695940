#pragma once

#include <memory>

#include "core/QVObject3DFpsBase.h"

namespace multiscene {

/// Builds nodes from their dictionaries.
class SceneNodes {
  public:
    /// A configured node of the dictionary's "type", belonging to `scene` but not yet added to it. An unknown
    /// type is an Error(Template).
    static std::shared_ptr<QVObject3DFpsBase> object3DWithInfo(const platform::Value& info,
                                                               const std::shared_ptr<QVScene3D>& scene);
};

}  // namespace multiscene
