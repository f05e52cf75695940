#include "cli/AuthorCommand.h"

#include <algorithm>
#include <system_error>

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

void requireOutside(const std::filesystem::path& folder, const std::filesystem::path& output,
                    const std::string& what) {
    std::error_code failure;
    const auto whole = [&](const std::filesystem::path& path) {
        const auto found = std::filesystem::weakly_canonical(std::filesystem::absolute(path), failure);
        return failure ? std::filesystem::absolute(path).lexically_normal() : found;
    };
    if (*whole(output).lexically_relative(whole(folder)).begin() != "..")
        throw Error(ErrorKind::Usage, what + " would lie in the template; name another place",
                    output.string());
}

}  // namespace multiscene::cli
