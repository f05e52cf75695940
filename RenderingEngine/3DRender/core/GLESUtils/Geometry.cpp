#include "core/GLESUtils/Geometry.h"

#include <epoxy/gl.h>

namespace multiscene {

Geometry::Geometry(std::vector<MeshVertex> corners) : corners_(std::move(corners)) {
    if (corners_.empty()) return;
    glm::vec2 least = corners_.front().textureCoordinate, most = least;
    for (const MeshVertex& corner : corners_) {
        box_.add(corner.position);
        least = glm::min(least, corner.textureCoordinate);
        most = glm::max(most, corner.textureCoordinate);
    }
    reached_ = {least.x, most.y, most.x, most.y, most.x, least.y, least.x, least.y};
}

unsigned int Geometry::glName() {
    if (buffer_ || corners_.empty()) return buffer_.name();
    buffer_.create();
    glBindBuffer(GL_ARRAY_BUFFER, buffer_.name());
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(corners_.size() * sizeof(MeshVertex)),
                 corners_.data(), GL_STATIC_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return buffer_.name();
}

}  // namespace multiscene
