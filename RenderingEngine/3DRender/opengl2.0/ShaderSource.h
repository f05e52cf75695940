// Reading shader descriptions and sources, the program's own and those that a template brings.
#pragma once

#include <optional>
#include <string>

#include "platform/base/FileGate.h"
#include "platform/base/Value.h"

namespace multiscene {

/// The path of a description file: as given when absolute, else among the program's own shaders.
std::string shaderDescriptionPath(const std::string& file);

/// The file lies among the program's own shaders.
bool isOwnShaderFile(const std::string& file);

/// Both below throw platform::Error when one of the program's own files cannot be read, or when the machine
/// does not manage to read: only what a template lacks may be skipped.

/// The dictionary of a description file, or none with the reason in `problem`.
platform::Value readShaderDescription(const std::string& file, platform::FileGate& gate,
                                      std::string& problem);

/// A source text, or none with the reason in `problem`: missing, refused by the fence, too long, not
/// UTF-8, more than a compiler or a pixel should have to do.
std::optional<std::string> readShaderText(const std::string& file, platform::FileGate& gate,
                                          std::string& problem);

}  // namespace multiscene
