#pragma once

#include <string>

namespace multiscene {

/// The reference of every file, dictionary and key of the format as Markdown, written from the key tables.
std::string sceneFormatReference();

}  // namespace multiscene
