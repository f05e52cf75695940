#include "cli/CatalogueCommand.h"

#include <sstream>

#include "app/installation/TemplateInstallation.h"
#include "cli/Table.h"
#include "platform/base/Error.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

std::shared_ptr<QVDataManager> openCatalogue() {
    auto catalogue = std::make_shared<QVDataManager>();
    catalogue->checkUsable();
    TemplateInstallation::recover(*catalogue);
    return catalogue;
}

void declareServer(Arguments& arguments, QVDownloadInfoManager& list) {
    arguments.option(
        "--server", "URL",
        "Address of the template server; else MULTISCENE_SERVER, else the one of the last update",
        [&list](const std::string& value) {
            if (!platform::isHttpUrl(value))
                throw Error(ErrorKind::Usage, "\"" + value + "\" is no http or https address");
            list.setServerAddress(value);
        });
}

platform::Value::Dictionary overviewFields(const TemplateOverview& overview) {
    return {{"id", overview.sId},
            {"name", overview.name},
            {"title", overview.title},
            {"installed", overview.isInstalled},
            {"sample", overview.isSample},
            {"offered", overview.isOffered},
            {"new", overview.isNew},
            {"newerOffered", overview.newerOffered},
            {"needsNewerVersion", overview.needsNewerVersion},
            {"minVersion", overview.minVersion},
            {"megabytes", overview.megabytes},
            {"frames", overview.frames},
            {"seconds", overview.seconds()},
            {"photos", overview.photos}};
}

std::string lengthText(const TemplateOverview& overview) {
    return overview.frames > 0 ? secondsText(overview.seconds()) : "-";
}

std::string stateText(const TemplateOverview& overview) {
    std::ostringstream text;
    const auto add = [&](bool isSo, const char* words) {
        if (isSo) text << (text.tellp() > 0 ? ", " : "") << words;
    };
    add(overview.isInstalled, "installed");
    add(overview.isSample, "sample");
    add(overview.isOffered && !overview.isInstalled, "offered");
    add(text.tellp() <= 0, "not installed");
    add(overview.isNew, "new");
    add(overview.newerOffered, "newer offered");
    if (overview.needsNewerVersion) text << ", needs version " << overview.minVersion;
    return text.str();
}

}  // namespace multiscene::cli
