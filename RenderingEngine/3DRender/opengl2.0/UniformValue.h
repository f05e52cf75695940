// A value on its way into a shader uniform.
#pragma once

#include <glm/glm.hpp>

namespace multiscene {

/// Refers to the caller's vector or matrix: use it only as an argument.
class UniformValue {
  public:
    enum class Kind { Integer, Float, Vector2, Vector3, Vector4, Matrix4 };

    UniformValue(int value) : kind_(Kind::Integer), integer_(value) {}
    UniformValue(float value) : kind_(Kind::Float), float_(value) {}
    UniformValue(const glm::vec2& value) : kind_(Kind::Vector2), floats_(&value[0]) {}
    UniformValue(const glm::vec3& value) : kind_(Kind::Vector3), floats_(&value[0]) {}
    UniformValue(const glm::vec4& value) : kind_(Kind::Vector4), floats_(&value[0]) {}
    UniformValue(const glm::mat4& value) : kind_(Kind::Matrix4), floats_(&value[0][0]) {}

    /// Writes into a location of the current program; -1 writes nothing.
    void write(int location) const;

  private:
    Kind kind_;
    int integer_ = 0;
    float float_ = 0;
    const float* floats_ = nullptr;
};

}  // namespace multiscene
