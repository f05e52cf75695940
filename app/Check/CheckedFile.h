#pragma once

#include <string>

#include "app/Check/Finding.h"
#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace multiscene {

/// The dictionary in a property list, with a finding for every fault that reading passes over; none, with a
/// finding, when there is none. Opens the file through FileGate::shared().
platform::Value readDictionary(const std::string& file, Findings& findings);

/// An error as a finding of `file`, unless it names another.
Finding findingOf(const platform::Error& error, const std::string& file);

}  // namespace multiscene
