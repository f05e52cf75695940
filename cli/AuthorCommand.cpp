#include "cli/AuthorCommand.h"

#include <algorithm>

#include "app/check/Checker.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

TemplateJudge judgeAloud(Console& console, const std::string& refusal) {
    return [&console, refusal](const TemplateFolder& folder) {
        const Findings findings = checkPath(folder.folder, nullptr);
        for (const Finding& finding : findings) console.finding(finding);
        const auto errors = std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
            return finding.severity == Severity::Error;
        });
        if (errors > 0)
            throw Error(ErrorKind::Template,
                        std::to_string(errors) + (errors == 1 ? " error; " : " errors; ") + refusal,
                        folder.folder.string());
    };
}

}  // namespace multiscene::cli
