// The words of a shader's text, macros expanded.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// The tokens that a compiler of GLSL ES would see, and more: every branch of a condition counts, because
/// what a driver defines is not known here, and a macro with several definitions stands for all of them.
/// Comments are gone. Nothing is expanded beyond `most` tokens.
struct ShaderTokens {
    std::vector<std::string> words;
    std::string problem;  ///< empty, or why the text is refused; the words are then incomplete
};

ShaderTokens shaderTokens(std::string_view text, size_t most);

}  // namespace platform
