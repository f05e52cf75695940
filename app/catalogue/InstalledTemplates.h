// The catalogue as users know it: templates, each with its scenes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Model/QVTempletDataModel.h"
#include "app/data/QVDataManager.h"

namespace multiscene {

struct InstalledTemplate {
    std::string name;                         ///< of its folder
    std::vector<QVTempletDataModel> records;  ///< the first is the template itself

    const QVTempletDataModel& main() const { return records.front(); }
};

/// Every template in the order of installation. Throws platform::Error.
std::vector<InstalledTemplate> installedTemplates(QVDataManager& catalogue);

/// Its names ("cName", "eName", "jName") as its own file says them now, else the one that the catalogue keeps
/// in the language of the day of installation.
platform::Value namesOf(const InstalledTemplate& installed);

/// The one in the user's language.
std::string displayName(const InstalledTemplate& installed);

/// By the number of any of its scenes, by its folder's name, or by its display name when only one template
/// has it.
std::optional<InstalledTemplate> findInstalledTemplate(QVDataManager& catalogue,
                                                       const std::string& numberOrName);

}  // namespace multiscene
