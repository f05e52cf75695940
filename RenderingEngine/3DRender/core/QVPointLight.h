#pragma once

#include "core/QVLightBase.h"

namespace multiscene {

/// Shines from its position into every direction. The shader tells it from a directional light by its number.
class QVPointLight : public QVLightBase {};

}  // namespace multiscene
