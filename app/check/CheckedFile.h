#pragma once

#include <string>

#include "app/check/Finding.h"
#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "platform/base/PropertyListFaults.h"
#include "platform/base/Value.h"

namespace multiscene {

/// The dictionary in a property list, with a finding for every fault that reading passes over; none, with a
/// finding, when there is none.
platform::Value readDictionary(const std::string& file, platform::FileGate& gate, Findings& findings);
/// The same for a file that has been opened, or tried to.
platform::Value readDictionary(const platform::FileGate::Opened& opened, const std::string& file,
                               Findings& findings);

/// What the reader of a property list passes over, as findings.
void addFaults(const std::vector<platform::PropertyListFault>& faults, const std::string& file,
               Findings& findings);

/// An error as a finding of `file`, unless it names another.
Finding findingOf(const platform::Error& error, const std::string& file);

}  // namespace multiscene
