#pragma once

#include "core/Material/QVTextureMaterial.h"

namespace multiscene {

/// What a scene or a node has drawn into a texture. Its size counts as unknown, so that a quad showing it
/// keeps its box. Glossary: "RTT" is render to texture.
class QVRTT2dMaterial : public QVTextureMaterial {
  public:
    /// The texture stays its owner's.
    explicit QVRTT2dMaterial(std::shared_ptr<Texture> texture);

    bool mayRepeat() const override { return false; }
};

}  // namespace multiscene
