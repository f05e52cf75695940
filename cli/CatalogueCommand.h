// What the commands on the catalogue share.
#pragma once

#include "app/Other/QVDownloadInfoManager.h"
#include "app/catalogue/TemplateOverview.h"
#include "app/data/QVDataManager.h"
#include "cli/Arguments.h"
#include "platform/base/Value.h"

namespace multiscene::cli {

/// The catalogue of the data home, judged usable, with what killed installations left put right. Throws
/// platform::Error.
std::shared_ptr<QVDataManager> openCatalogue();

/// --server, given to `list`.
void declareServer(Arguments& arguments, QVDownloadInfoManager& list);

/// Fields of a template in JSON lines.
platform::Value::Dictionary overviewFields(const TemplateOverview& overview);

/// "12.3 s" or "-".
std::string lengthText(const TemplateOverview& overview);
/// "installed, new, needs version 2.5".
std::string stateText(const TemplateOverview& overview);

}  // namespace multiscene::cli
