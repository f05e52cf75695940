// A value on its way into a shader uniform.
#pragma once

#include <glm/glm.hpp>
#include <variant>

namespace multiscene {

class UniformValue {
  public:
    UniformValue(int value) : value_(value) {}
    UniformValue(float value) : value_(value) {}
    UniformValue(const glm::vec2& value) : value_(value) {}
    UniformValue(const glm::vec3& value) : value_(value) {}
    UniformValue(const glm::vec4& value) : value_(value) {}
    UniformValue(const glm::mat4& value) : value_(value) {}

    /// Writes into a location of the current program; -1 writes nothing.
    void write(int location) const;

  private:
    std::variant<int, float, glm::vec2, glm::vec3, glm::vec4, glm::mat4> value_;
};

}  // namespace multiscene
