#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>

namespace platform {

/// In which lines, from 1, of an XML property list the values of these key paths begin
/// ("object3D[2].FpsInfo.endFps"); for one that is not there, the nearest dictionary that would hold it. None
/// for a binary list and for what is not well formed.
std::map<std::string, size_t> propertyListLines(std::span<const uint8_t> bytes,
                                                const std::set<std::string>& keyPaths);

}  // namespace platform
