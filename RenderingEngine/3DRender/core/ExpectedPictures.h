#pragma once

namespace multiscene {

class QVScene3D;

/// Has the pictures of a scene's nodes made ahead, those that are shown first before the others, those
/// behind its last frame not. When all
/// nodes are in the scene, and its camera; render queue.
void expectPictures(const QVScene3D& scene);

}  // namespace multiscene
