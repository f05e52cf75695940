#pragma once

#include <glm/glm.hpp>
#include <string>

#include "format/KeyTable.h"
#include "platform/font/Letters.h"
#include "playback/Playback.h"

namespace multiscene {

/// What the "TextureFontInfo" of any letters reads.
extern const KeyTable fontInfoKeys;

/// Which text, and where its lines lie around the node's origin.
struct LetterSettings {
    platform::LetterText text;
    glm::vec2 box{0};       ///< model units, around the origin; a side may be 0
    glm::vec2 share{0.5f};  ///< of the free room in the box that lies left of the block, and above it

    /// From the block's middle to where that is to lie.
    glm::vec3 offset(const platform::LetterBlock& block) const;
};

/// Looks the text and its font up, and makes the text fit its box.
LetterSettings readLetterSettings(const platform::Value& fontInfo, const std::string& sceneIdentifier,
                                  const std::string& sceneFolder, Playback& playback);

}  // namespace multiscene
