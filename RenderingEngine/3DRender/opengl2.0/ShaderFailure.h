// What went wrong while a program was built.
#pragma once

#include <string>

namespace multiscene {

struct ShaderFailure {
    std::string shader;  ///< the name or key it is cached under
    /// The description or source file; empty for sources built in memory and for linking.
    std::string file;
    /// The compiler's or linker's words with their line numbers, or why a file is not read.
    std::string message;
};

}  // namespace multiscene
