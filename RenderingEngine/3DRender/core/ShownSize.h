#pragma once

#include <optional>

#include "core/QVObject3DTransformBase.h"

namespace multiscene {

/// The most pixels of the picture that a model unit of the node takes, over all motions of the node and its
/// parents. Nothing where it cannot be told beforehand: a camera with perspective, a scale that follows a
/// path, a moving part of the texture.
std::optional<double> mostPixelsAUnit(QVObject3DTransformBase& node);

}  // namespace multiscene
