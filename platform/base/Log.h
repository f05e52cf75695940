// Diagnostics for the person at the terminal. Nothing is printed unless the program was started with
// --verbose.
#pragma once

#include <string>

namespace platform::log {

void setVerbose(bool verbose);
bool isVerbose();

/// One line on standard error, only when verbose. Any thread.
void info(const std::string& line);

}  // namespace platform::log
