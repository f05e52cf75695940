#pragma once

#include <glm/glm.hpp>

#include "core/Material/QVMaterialBase.h"
#include "format/KeyTable.h"

namespace multiscene {

extern const KeyTable signColorKeys;

/// One colour, for meshes. Glossary: "sign" is single.
class QVSignColorMaterial : public QVMaterialBase {
  public:
    /// Reads "r", "g", "b" and "a".
    explicit QVSignColorMaterial(const platform::Value& info);

    /// Red, green, blue, alpha, each 0 to 1.
    const glm::vec4& color() const { return color_; }
    float r() const { return color_.r; }
    float g() const { return color_.g; }
    float b() const { return color_.b; }
    float a() const { return color_.a; }

  private:
    glm::vec4 color_;
};

}  // namespace multiscene
