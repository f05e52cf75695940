// Single files compressed with gzip.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/base/Error.h"

namespace platform {

/// The bytes start like a gzip file.
bool isGzip(std::span<const uint8_t> bytes);

/// All members of a gzip file, inflated. Throws Error(kind) naming the file when it is cut off or damaged, or
/// would inflate to more than `maxBytes`.
std::vector<uint8_t> inflateGzip(std::span<const uint8_t> bytes, const std::string& name, uint64_t maxBytes,
                                 ErrorKind kind = ErrorKind::Template);

}  // namespace platform
