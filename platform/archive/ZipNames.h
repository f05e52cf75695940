// Which names in an archive may become files.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/archive/ZipLimits.h"

namespace platform {

/// Why a name may not be used; nothing when it may. Folders end in "/".
std::optional<std::string> faultOfZipName(const std::string& name, const ZipLimits& limits);

/// The names of one archive, which must differ by more than case and by more than how accents are composed:
/// on another file system two such files would be one.
class ZipNameSet {
  public:
    /// Adds a name and the folders on its way; the reason when it collides with an earlier one.
    std::optional<std::string> faultOfAdding(const std::string& name);

  private:
    struct Known {
        std::string spelling;
        bool folder, listed;
    };
    std::optional<std::string> add(const std::string& path, bool folder, bool listed);
    std::map<std::string, Known> byFoldedName_;
};

/// A name for messages: control characters and broken UTF-8 become "?".
std::string printableName(const std::string& name);

}  // namespace platform
