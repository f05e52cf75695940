#pragma once

#include "core/QVLightBase.h"

namespace multiscene {

/// Shines from one direction, its position. The shader tells it from a point light by its number.
class QVDirectionalLight : public QVLightBase {};

}  // namespace multiscene
