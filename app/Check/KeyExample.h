#pragma once

#include <string>

#include "other/KeyTable.h"

namespace multiscene {

/// A small property-list dictionary for a table: its required keys and a few others, with plausible values.
/// Dictionaries deeper down are left out.
std::string exampleOf(const KeyTable& table);

}  // namespace multiscene
