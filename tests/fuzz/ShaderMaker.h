#pragma once

#include <string>

#include "tests/fuzz/ByteSource.h"

namespace multiscene::fuzz {

/// A fragment shader by the grammar of GLSL ES, with the macros, loops, arrays and nesting that hurt
/// compilers. Often valid, never longer than a few hundred kB.
std::string makeShader(ByteSource& source);

}  // namespace multiscene::fuzz
