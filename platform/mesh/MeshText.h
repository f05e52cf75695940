// Private to platform/mesh: texts in mesh files, and normals that they do not give.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mesh/MeshFile.h"

namespace platform {

/// The bytes of "data:…;base64,…"; none for a text that is not one.
std::optional<std::vector<uint8_t>> bytesOfDataUri(std::string_view uri);
/// "a%20b.png" as a file's name; empty for what is no relative path.
std::string relativePathOf(std::string_view uri);
/// A file that has these bytes and no name, for readers that want one. Throws Error.
FileHandle fileInMemory(std::string_view bytes);
/// Values that JSON text holds, about and at least, without building them.
uint64_t countJsonValues(std::string_view text);

/// Gives each triangle the normal of its plane.
void setFlatNormals(std::span<MeshCorner> corners);

}  // namespace platform
