#include "opengl2.0/UniformValue.h"

#include <epoxy/gl.h>

namespace multiscene {

void UniformValue::write(int location) const {
    if (location < 0) return;
    switch (kind_) {
        case Kind::Integer:
            return glUniform1i(location, integer_);
        case Kind::Float:
            return glUniform1f(location, float_);
        case Kind::Vector2:
            return glUniform2fv(location, 1, floats_);
        case Kind::Vector3:
            return glUniform3fv(location, 1, floats_);
        case Kind::Vector4:
            return glUniform4fv(location, 1, floats_);
        case Kind::Matrix4:
            return glUniformMatrix4fv(location, 1, GL_FALSE, floats_);
    }
}

}  // namespace multiscene
