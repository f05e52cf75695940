#pragma once

#include <string>

namespace multiscene {

class QVObjectContainer3D;

/// Notes in the render report what a node had to leave out, with the node's scene and name. `what` is a class
/// of trouble such as "missing file", `name` the file or key. Any number of times: listed once. A node
/// outside a scene has no report.
void reportSkipped(const QVObjectContainer3D& node, std::string what, std::string name);

/// The same for what a node used in another way than its dictionary says; `what` says how.
void reportUsedOtherwise(const QVObjectContainer3D& node, std::string what, std::string name);

}  // namespace multiscene
