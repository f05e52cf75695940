// What an XML property list says that its reader takes silently for something else.
#pragma once

#include <span>
#include <string>
#include <vector>

namespace platform {

struct PropertyListFault {
    size_t line;  ///< from 1
    std::string message;
};

/// In order of lines: keys given twice or without a value, numbers that are none, unknown elements, a bare
/// "&", bytes that are not UTF-8. For XML that is not well formed, the parser's own words. A binary list has
/// none.
std::vector<PropertyListFault> propertyListFaults(std::span<const uint8_t> bytes);

}  // namespace platform
