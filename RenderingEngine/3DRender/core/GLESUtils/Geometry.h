// What lit surfaces are made of: triangles in memory, in GL, or both, whichever the painter needs.
#pragma once

#include <array>
#include <glm/glm.hpp>
#include <span>
#include <vector>

#include "core/GLESUtils/GLObject.h"

namespace multiscene {

/// A corner of a triangle, in model space.
struct MeshVertex {
    glm::vec3 position;
    glm::vec3 normal;
    glm::vec2 textureCoordinate;
};

/// From the smallest to the largest coordinates; empty where nothing was added.
struct ModelBox {
    glm::vec3 least{0}, most{0};
    bool isEmpty = true;

    void add(const glm::vec3& place) {
        least = isEmpty ? place : glm::min(least, place);
        most = isEmpty ? place : glm::max(most, place);
        isEmpty = false;
    }
    void add(const ModelBox& other) {
        if (other.isEmpty) return;
        add(other.least);
        add(other.most);
    }
    glm::vec3 middle() const { return (least + most) / 2.0f; }
    glm::vec3 size() const { return most - least; }
};

/// Triangles that stay as they are, three corners each. GL takes them over once, at their first drawing.
/// Render queue; glName() needs the GL context current, nothing else does.
class Geometry {
  public:
    Geometry() = default;
    explicit Geometry(std::vector<MeshVertex> corners);

    std::span<const MeshVertex> corners() const { return corners_; }
    bool isEmpty() const { return corners_.empty(); }
    const ModelBox& box() const { return box_; }
    /// The texture coordinates that are reached, as those of a quad's four corners.
    const std::array<float, 8>& reachedCoordinates() const { return reached_; }
    /// The GL buffer with the corners, as they lie in memory.
    unsigned int glName();

  private:
    std::vector<MeshVertex> corners_;
    ModelBox box_;
    std::array<float, 8> reached_{};
    GLBuffer buffer_;
};

}  // namespace multiscene
