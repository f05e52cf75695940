#pragma once

#include <string>

#include "other/KeyTable.h"

namespace multiscene {

/// A small property-list dictionary for a table: its required keys and a few others, with plausible values.
/// `type` is the value of "type" where the table has that key.
std::string exampleOf(const KeyTable& table, const std::string& type);

}  // namespace multiscene
