// What a foreign shader asks of the driver's compiler and of every pixel, told from its text: compilers are
// recursive, put functions and loops where they are called, and run as long as they are let.
#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Empty, or why the text is refused: it is beyond one of the limits maxShader…, or loops without a bound
/// that can be told ("while"). A text within them may still be slow, and may still be wrong.
std::string shaderTextProblem(std::string_view text);

}  // namespace platform
