// Finds faces that look into the camera, for cropping photos: a hint, not a proof. The same picture always
// gives the same faces.
#pragma once

#include <vector>

#include "platform/face/FaceCascade.h"

namespace platform {

/// A face from the brows to the chin, in pixels of the picture.
struct Face {
    double x = 0, y = 0, width = 0, height = 0;
};

/// Faces of at least 20 pixels, the largest first. The work grows with the picture's size: give one of about
/// 400 pixels. Any thread. Throws Error(Failed) when the trained data is not there.
std::vector<Face> findFaces(const GreyPicture& picture);

}  // namespace platform
