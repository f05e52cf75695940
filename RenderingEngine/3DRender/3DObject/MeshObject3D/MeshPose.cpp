#include "3DObject/MeshObject3D/MeshPose.h"

#include <algorithm>
#include <cstring>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

namespace multiscene {

using platform::MeshTrack;

namespace {

/// Between which two times a second lies, and how far.
struct Between {
    size_t first = 0, second = 0;
    float part = 0;      ///< 0 to 1
    float duration = 0;  ///< seconds from one to the other
};

Between placeIn(const std::vector<float>& times, double seconds) {
    const auto next = std::ranges::upper_bound(times, static_cast<float>(seconds));
    if (next == times.begin()) return {};
    const auto second = static_cast<size_t>(next - times.begin());
    if (second == times.size()) return {second - 1, second - 1, 0, 0};
    const float duration = times[second] - times[second - 1];
    return {second - 1, second, static_cast<float>((seconds - double{times[second - 1]}) / duration),
            duration};
}

template <typename Vector>
Vector numbersAt(const MeshTrack& track, size_t index) {
    Vector value;
    std::memcpy(&value, &track.values[index * sizeof(Vector) / sizeof(float)], sizeof value);
    return value;
}

/// x, y, z, w.
glm::vec4 towards(const glm::vec4& from, glm::vec4 to, float part) {
    float near = glm::dot(from, to);
    if (near < 0) to = -to, near = -near;  // the shorter way
    constexpr float almostOne = 0.9995f;
    if (near > almostOne) return glm::normalize(from + part * (to - from));
    const float angle = std::acos(near);
    return (std::sin((1 - part) * angle) * from + std::sin(part * angle) * to) / std::sin(angle);
}
glm::vec3 towards(const glm::vec3& from, const glm::vec3& to, float part) {
    return from + part * (to - from);
}

template <typename Vector>
Vector valueAt(const MeshTrack& track, double seconds) {
    const Between at = placeIn(track.times, seconds);
    if (track.way != MeshTrack::Way::Cubic) {
        const auto from = numbersAt<Vector>(track, at.first);
        if (track.way == MeshTrack::Way::Step) return from;
        return towards(from, numbersAt<Vector>(track, at.second), at.part);
    }
    // Slope before, value, slope behind.
    const auto from = numbersAt<Vector>(track, 3 * at.first + 1),
               to = numbersAt<Vector>(track, 3 * at.second + 1);
    const auto leaving = at.duration * numbersAt<Vector>(track, 3 * at.first + 2),
               arriving = at.duration * numbersAt<Vector>(track, 3 * at.second);
    const float t = at.part, t2 = t * t, t3 = t2 * t;
    return (2 * t3 - 3 * t2 + 1) * from + (t3 - 2 * t2 + t) * leaving + (3 * t2 - 2 * t3) * to +
           (t3 - t2) * arriving;
}

struct Place {
    glm::vec3 translation, scale;
    glm::vec4 rotation;
};

glm::mat4 matrixOf(const platform::MeshNode& node, const Place& place) {
    if (node.hasMatrix) {
        glm::mat4 matrix;
        std::memcpy(&matrix[0][0], node.matrix.data(), sizeof matrix);
        return matrix;
    }
    const glm::vec4& r = place.rotation;
    const float length = glm::length(r);
    const glm::quat turn = length > 0 ? glm::quat(r.w / length, r.x / length, r.y / length, r.z / length)
                                      : glm::quat(1, 0, 0, 0);
    return glm::scale(glm::translate(glm::mat4(1), place.translation) * glm::mat4_cast(turn), place.scale);
}

}  // namespace

std::vector<glm::mat4> poseOf(const platform::MeshFile& file, const platform::MeshAnimation* animation,
                              double seconds) {
    std::vector<Place> places;
    for (const platform::MeshNode& node : file.nodes)
        places.push_back({{node.translation[0], node.translation[1], node.translation[2]},
                          {node.scale[0], node.scale[1], node.scale[2]},
                          {node.rotation[0], node.rotation[1], node.rotation[2], node.rotation[3]}});
    if (animation)
        for (const MeshTrack& track : animation->tracks) {
            Place& place = places[static_cast<size_t>(track.node)];
            if (track.property == MeshTrack::Property::Translation)
                place.translation = valueAt<glm::vec3>(track, seconds);
            else if (track.property == MeshTrack::Property::Scale)
                place.scale = valueAt<glm::vec3>(track, seconds);
            else
                place.rotation = valueAt<glm::vec4>(track, seconds);
        }
    std::vector<glm::mat4> pose;
    for (size_t i = 0; i < file.nodes.size(); ++i) {
        const glm::mat4 own = matrixOf(file.nodes[i], places[i]);
        const int parent = file.nodes[i].parent;
        pose.push_back(parent < 0 ? own : pose[static_cast<size_t>(parent)] * own);
    }
    return pose;
}

}  // namespace multiscene
