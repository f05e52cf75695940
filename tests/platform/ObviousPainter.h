// A painter that is slow and obvious: every pixel of every shape by itself, in the order of the formulas.
#pragma once

#include "PaintFixture.h"

namespace platform::obvious {

/// Paints the shape on the picture.
void paint(const PreparedPaint& paint, Picture& picture);

}  // namespace platform::obvious
