#include "core/GLESUtils/DrawQuad.h"

#include <epoxy/gl.h>

namespace multiscene {

namespace {

void pointTo(unsigned int attribute, int components, const float* values) {
    if (attribute == 0 || !values) return;
    glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, 0, values);
    glEnableVertexAttribArray(attribute);
}

void release(unsigned int attribute) {
    if (attribute != 0) glDisableVertexAttribArray(attribute);
}

}  // namespace

void drawQuadFan(unsigned int positionAttribute, unsigned int textureCoordinateAttribute,
                 const QuadCorners& corners) {
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    pointTo(positionAttribute, 3, corners.positions);
    pointTo(textureCoordinateAttribute, 2, corners.textureCoordinates);
    glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    // The arrays are the caller's memory: a later draw with other attributes must not look at them.
    release(positionAttribute);
    release(textureCoordinateAttribute);
}

}  // namespace multiscene
