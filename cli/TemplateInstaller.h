// Installing templates on the console's behalf, each step in a process that reaches no more than it needs.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "app/installation/TemplateInstallation.h"
#include "app/job/JobFolder.h"
#include "cli/FencedWork.h"

namespace multiscene::cli {

/// The program hears the moment at which a change of the catalogue is made: from then on it stands, and a
/// signal no longer ends the worker, which tidies up. Its answer commits (FencedWork::commit).
InstallOptions committing(InstallOptions options, const Workplace& place);

/// One worker downloads and reads nothing of what it gets; one unpacks and judges, and writes in the job's
/// folder alone; one changes the catalogue and reads nothing that a template has written.
class TemplateInstaller {
  public:
    /// With `replaces` an installed template of the same name makes way. All three outlive it.
    TemplateInstaller(FencedWork& fenced, const JobFolder& job, bool replaces)
        : fenced_(fenced), job_(job), replaces_(replaces) {}

    /// Both say what came of it as the event `event`, and throw platform::Error when nothing was installed.
    void fromArchive(const std::filesystem::path& zip, const std::string& event);
    /// `offeredNumber` is that of the server's list. A failed download tells that the list may be old.
    void fromUrl(const std::string& url, std::optional<int64_t> offeredNumber, const std::string& event);

    /// Says what was installed, or that it is installed already: a line, or the event with --json.
    static void tell(Console& console, const InstallResult& result, const std::string& event);

  private:
    void install(const std::filesystem::path& zip, std::optional<int64_t> offeredNumber,
                 const std::string& event);
    InstallOptions options(const Workplace& place, std::optional<int64_t> offeredNumber) const;
    std::filesystem::path downloaded(const std::string& url, const std::string& name);

    FencedWork& fenced_;
    const JobFolder& job_;
    bool replaces_;
};

}  // namespace multiscene::cli
