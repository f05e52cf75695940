#pragma once

#include <string>

namespace multiscene {

/// "1.0.0".
std::string programVersion();

/// The version read as a decimal number, as a template's "minVersion" is: 1.0.0 is 1.
float programVersionNumber();

/// "99.5 is needed, this is 1.0.0".
std::string versionsText(float minVersion);

/// Throws platform::Error(Failed), naming both versions, when a template needs a newer program.
void requireProgramVersion(float minVersion, const std::string& templateName);

}  // namespace multiscene
