// Who works with an installed template at the moment: its files lie in one folder that an update exchanges.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/store/FileLock.h"

namespace multiscene {

/// For the one program that changes the template, from the download to the end. Nothing when another holds it
/// after `patience`.
std::optional<platform::FileLock> lockForChange(const std::string& name, std::chrono::milliseconds patience);

/// For programs that read the template's files: shared. Whoever exchanges the files takes it alone, for that
/// moment only. Throws Error(Transient) after `patience`. Nothing where the data folder cannot be written:
/// nobody exchanges anything there.
std::optional<platform::FileLock> lockForUse(const std::string& name, std::chrono::milliseconds patience);
platform::FileLock lockForExchange(const std::string& name, std::chrono::milliseconds patience);

}  // namespace multiscene
