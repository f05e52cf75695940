#include "core/GLESUtils/DrawTriangles.h"

#include <epoxy/gl.h>

namespace multiscene {

void drawTriangles(const TriangleAttributes& attributes, const TriangleCorners& corners, bool cullBack) {
    struct Array {
        unsigned int attribute;
        int components;
        const float* values;
    };
    const Array arrays[] = {{attributes.position, 3, corners.positions},
                            {attributes.textureCoordinate, 2, corners.textureCoordinates},
                            {attributes.normal, 3, corners.normals}};
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    for (const auto& [attribute, components, values] : arrays) {
        if (attribute == 0) continue;
        glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, corners.stride, values);
        glEnableVertexAttribArray(attribute);
    }
    if (cullBack) glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glDrawArrays(GL_TRIANGLES, 0, corners.count);
    glDisable(GL_CULL_FACE);
    for (const Array& array : arrays)
        if (array.attribute != 0) glDisableVertexAttribArray(array.attribute);
}

}  // namespace multiscene
