#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/base/Value.h"

namespace platform {

/// An XML document as nested dictionaries: element and attribute names are keys, text is text, elements of
/// the same name are an array. None when it is not well formed or nested more than 64 deep. External entities
/// are not followed.
std::optional<Value> parseXml(const std::vector<uint8_t>& bytes);

}  // namespace platform
