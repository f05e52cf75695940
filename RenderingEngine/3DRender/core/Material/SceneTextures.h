// The pictures of whole scenes that transitions are made of: who shows them, and for how long.
#pragma once

#include "group/SceneGroup.h"

namespace multiscene {

inline constexpr const char* kCurrentSceneTexture = "currentSceneRenderTexture";
inline constexpr const char* kNextSceneTexture = "nextSceneRenderTexture";

/// Whether a frame may show what a scene's texture held in an earlier one. Where only transitions of type 0
/// show them, which draw nothing into textures of their own, each frame shows what was drawn in its own turn.
bool outlastTheirTurn(const SceneGroup& group);

}  // namespace multiscene
