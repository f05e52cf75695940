// Property-list files, XML and binary. Size, nesting and number of values are capped before anything is
// parsed, because the parser recurses and a binary list can name one object many times over.
#pragma once

#include <filesystem>
#include <span>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/Limits.h"
#include "platform/base/Value.h"

namespace platform {

struct PropertyListLimits {
    uint64_t maxBytes = limitOf("maxListBytes");
    int maxDepth = limitOf<int>("maxListDepth");
    uint64_t maxValues = limitOf("maxListValues");
};

/// Parses either form. `name` is the file in the message of the Error(kind) that a fault throws.
Value parsePropertyList(std::span<const uint8_t> bytes, const std::string& name,
                        ErrorKind kind = ErrorKind::Template, const PropertyListLimits& limits = {});

/// Reads a file without passing the fence (the program's own files). Throws Error(kind).
Value readPropertyList(const std::filesystem::path& file, ErrorKind kind = ErrorKind::Template);

/// XML form, keys in alphabetical order: the same value always gives the same bytes.
std::string propertyListXml(const Value& value);

/// Writes the XML form atomically. Throws Error.
void writePropertyList(const std::filesystem::path& file, const Value& value);

}  // namespace platform
