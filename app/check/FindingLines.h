#pragma once

#include <filesystem>
#include <vector>

#include "app/check/Finding.h"

namespace multiscene {

/// The lines of their files, from 1, in which what is wrong stands; 0 where that is not known: of files that
/// are no XML property lists, and of those outside the judged folder or the judged file's.
std::vector<size_t> linesOf(const Findings& findings, const std::filesystem::path& judged);

}  // namespace multiscene
