#include "app/catalogue/InstalledTemplates.h"

#include <algorithm>

#include "app/language/LocalizedName.h"
#include "app/template/TemplateFolder.h"
#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/PropertyList.h"

namespace multiscene {

namespace {

bool hasNumber(const InstalledTemplate& each, const std::string& number) {
    return std::any_of(each.records.begin(), each.records.end(), [&](const QVTempletDataModel& record) {
        return std::to_string(record.sId()) == number;
    });
}

template <typename Condition>
std::optional<InstalledTemplate> onlyOne(const std::vector<InstalledTemplate>& all, Condition condition) {
    const auto first = std::find_if(all.begin(), all.end(), condition);
    if (first == all.end() || std::find_if(first + 1, all.end(), condition) != all.end()) return std::nullopt;
    return *first;
}

}  // namespace

std::vector<InstalledTemplate> installedTemplates(QVDataManager& catalogue) {
    std::vector<InstalledTemplate> templates;
    for (QVTempletDataModel& record : catalogue.allSignSceneData()) {
        const std::string owner = templateOwning(record.scenePlistPath());
        auto known = std::find_if(templates.begin(), templates.end(),
                                  [&](const InstalledTemplate& each) { return each.name == owner; });
        if (known == templates.end()) known = templates.insert(known, {owner, {}});
        known->records.push_back(std::move(record));
    }
    return templates;
}

platform::Value namesOf(const InstalledTemplate& installed) {
    const std::string file = QVUtil::scenePath() + installed.name + "/" + installed.name + ".plist";
    try {
        platform::Value names =
            namesInDescription(platform::readPropertyList(file, platform::ErrorKind::Template));
        if (!nameInUserLanguage(names).empty()) return names;
    } catch (const platform::Error&) {  // what the catalogue keeps is good enough
    }
    return installed.main().sceneName();
}

std::string displayName(const InstalledTemplate& installed) { return nameInUserLanguage(namesOf(installed)); }

std::optional<InstalledTemplate> findInstalledTemplate(QVDataManager& catalogue,
                                                       const std::string& numberOrName) {
    const std::vector<InstalledTemplate> all = installedTemplates(catalogue);
    if (auto found = onlyOne(all, [&](const InstalledTemplate& each) { return each.name == numberOrName; }))
        return found;
    if (auto found =
            onlyOne(all, [&](const InstalledTemplate& each) { return hasNumber(each, numberOrName); }))
        return found;
    return onlyOne(all, [&](const InstalledTemplate& each) {
        return each.main().sceneName() == numberOrName || displayName(each) == numberOrName;
    });
}

}  // namespace multiscene
