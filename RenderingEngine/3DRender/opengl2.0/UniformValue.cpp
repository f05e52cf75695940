#include "opengl2.0/UniformValue.h"

#include <epoxy/gl.h>

namespace multiscene {

namespace {

struct Writer {
    int location;

    void operator()(int value) const { glUniform1i(location, value); }
    void operator()(float value) const { glUniform1f(location, value); }
    void operator()(const glm::vec2& value) const { glUniform2fv(location, 1, &value[0]); }
    void operator()(const glm::vec3& value) const { glUniform3fv(location, 1, &value[0]); }
    void operator()(const glm::vec4& value) const { glUniform4fv(location, 1, &value[0]); }
    void operator()(const glm::mat4& value) const { glUniformMatrix4fv(location, 1, GL_FALSE, &value[0][0]); }
};

}  // namespace

void UniformValue::write(int location) const {
    if (location >= 0) std::visit(Writer{location}, value_);
}

}  // namespace multiscene
