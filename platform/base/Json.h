#pragma once

#include <string>
#include <string_view>

#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace platform {

/// Parses JSON text into a value. `name` is the file in the message of the Error(kind) that a fault throws.
Value parseJson(std::string_view text, const std::string& name, ErrorKind kind = ErrorKind::Input);

/// Compact JSON, keys in alphabetical order. Numbers that are not finite are written as null, invalid UTF-8
/// is replaced, dates and data become text.
std::string jsonText(const Value& value);

}  // namespace platform
