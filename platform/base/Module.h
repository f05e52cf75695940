#pragma once

#include <string>

namespace platform {

/// A function of a part of the program that is loaded only when it is wanted: the libraries behind it cost
/// every start time, and a server need not have them. The part lies beside the program's library as
/// lib<name>.so and stays loaded. Throws Error(Failed).
void* moduleFunction(const std::string& name, const char* function);

}  // namespace platform
