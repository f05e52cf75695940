#include <algorithm>
#include <filesystem>
#include <vector>

#include "app/check/Checker.h"
#include "app/check/FindingLines.h"
#include "app/data/QVDataManager.h"
#include "app/job/JobFolder.h"
#include "app/job/Playable.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "cli/FindingFields.h"
#include "cli/SourceReach.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

constexpr int kFound = static_cast<int>(ErrorKind::Template);

class CheckCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("PATH", "A template's folder or zip, a scene file or a scene-group file",
                       [this](const std::string& value) { path_ = value; });
        arguments.flag("--strict", "Take warnings for errors", isStrict_);
        arguments.example("multiscene check templates/minimal");
    }
    bool isResultPrinted() const override { return true; }

  protected:
    bool needsFolder() const override { return !isReadWhereItLies(path_); }

    Errand prepare(const std::filesystem::path&) override {
        if (!std::filesystem::exists(path_)) throw Error(ErrorKind::Template, "does not exist", path_);
        return errandOf(path_);
    }

    int work(Console& console, std::stop_token, const std::function<void()>&) override {
        const Findings findings = findingsOf(path_);
        tell(console, findings);
        printTotal(console, findings);
        return isFaulty(findings) ? kFound : 0;
    }

  private:
    static bool isReadWhereItLies(const std::filesystem::path& path) {
        std::error_code failure;
        return std::filesystem::is_directory(path, failure) || path.extension() == ".plist" ||
               !std::filesystem::exists(path, failure);
    }

    /// A zip is judged as the folder in it.
    static Findings findingsOf(const std::filesystem::path& path) {
        QVDataManager catalogue;
        if (isReadWhereItLies(path)) return checkPath(path, &catalogue);
        const JobFolder job;
        return checkPath(unpackTemplate(path, job), &catalogue);
    }

    /// Programs are told the lines, too, so that an editor can go there; not of what was unpacked for this.
    void tell(Console& console, const Findings& findings) const {
        const bool hasLines = console.isJson() && isReadWhereItLies(path_);
        const auto lines = hasLines ? linesOf(findings, path_) : std::vector<size_t>(findings.size());
        for (size_t index = 0; index < findings.size(); ++index) {
            if (lines[index] == 0) {
                console.finding(findings[index]);
                continue;
            }
            auto fields = fieldsOf(findings[index]);
            fields["line"] = static_cast<int64_t>(lines[index]);
            console.event("finding", std::move(fields));
        }
    }

    /// Warnings alone are for the author to judge.
    bool isFaulty(const Findings& findings) const {
        return std::any_of(findings.begin(), findings.end(), [this](const Finding& finding) {
            return isStrict_ || finding.severity == Severity::Error;
        });
    }

    void printTotal(Console& console, const Findings& findings) const {
        const int64_t errors = std::count_if(findings.begin(), findings.end(), [](const Finding& finding) {
            return finding.severity == Severity::Error;
        });
        const auto warnings = static_cast<int64_t>(findings.size()) - errors;
        if (console.isJson()) return console.event("done", {{"errors", errors}, {"warnings", warnings}});
        if (findings.empty()) return console.line(path_ + ": nothing wrong");
        console.line(path_ + ": " + std::to_string(errors) + (errors == 1 ? " error, " : " errors, ") +
                     std::to_string(warnings) + (warnings == 1 ? " warning" : " warnings"));
    }

    std::string path_;
    bool isStrict_ = false;
};

}  // namespace

std::unique_ptr<Command> makeCheckCommand() { return std::make_unique<CheckCommand>(); }

}  // namespace multiscene::cli
