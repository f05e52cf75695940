#pragma once

#include <string>

namespace multiscene {

/// "1.0.0".
std::string programVersion();

/// The version read as a decimal number, as a template's "minVersion" is: 1.0.0 is 1.
float programVersionNumber();

}  // namespace multiscene
