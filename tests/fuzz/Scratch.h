// Where targets put what has to be a file.
#pragma once

#include <filesystem>

#include "platform/base/File.h"
#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

/// A file in memory that nobody else sees.
platform::FileHandle memoryFile(Bytes bytes);

/// A folder of this process in memory; the data home lies in it. Removed when the program ends.
const std::filesystem::path& scratchFolder();
/// The same place each time, empty.
std::filesystem::path emptyScratch(const char* name);

void writeFile(const std::filesystem::path& file, Bytes bytes);

}  // namespace multiscene::fuzz
