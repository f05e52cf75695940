// Who works with an installed template at the moment: its files lie in one folder that an update exchanges.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/store/FileLock.h"

namespace multiscene {

/// For the one program that changes the template. Nothing when another holds it after `patience`. Throws
/// Error(Cancelled) when `isCancelled`, which is asked while it waits, says so.
std::optional<platform::FileLock> lockForChange(const std::string& name, std::chrono::milliseconds patience,
                                                const std::function<bool()>& isCancelled = {});

/// For programs that read the template's files: shared. Whoever exchanges the files takes it alone, for that
/// moment only. Throws Error(Transient) after `patience`. Nothing where the data folder cannot be written and
/// has no such lock: nobody exchanges anything there.
std::optional<platform::FileLock> lockForUse(const std::string& name, std::chrono::milliseconds patience);
platform::FileLock lockForExchange(const std::string& name, std::chrono::milliseconds patience,
                                   const std::function<bool()>& isCancelled = {});

}  // namespace multiscene
