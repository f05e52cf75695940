#include <optional>

#include "app/Other/ProgramVersion.h"
#include "app/Other/QVDownloadInfoManager.h"
#include "app/Other/Settings.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/TemplateInstaller.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

std::string counted(size_t number, const std::string& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

class TemplatesUpdateCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.flag("--all", "Install the newer versions of what is installed, too", installsNewer_);
        declareServer(arguments);
        arguments.example("multiscene templates update --server https://templates.example.org/");
        arguments.example("multiscene templates update --all");
    }

    int run(Console& console, std::stop_token stop) override {
        const QVDownloadInfoManager& list = QVDownloadInfoManager::sharedInstance();
        const std::string address = list.serverAddress();
        fetch(list, stop);
        saveSetting(kServerSetting, address);
        const auto offered = static_cast<int64_t>(list.severTemplets().size());
        const std::vector<TemplateOverview> newer = newerOnes();
        if (!console.isJson())
            console.line(address + " offers " + counted(static_cast<size_t>(offered), "template") +
                         newerText(newer));
        if (installsNewer_) install(newer, console, stop);
        if (console.isJson())
            console.event("done", {{"server", address},
                                   {"offered", offered},
                                   {"newer", static_cast<int64_t>(newer.size())},
                                   {"installed", installed_}});
        return 0;
    }

  private:
    static void fetch(const QVDownloadInfoManager& list, const std::stop_token& stop) {
        try {
            list.downloadInfo([&] { return stop.stop_requested(); });
        } catch (const Error& failure) {
            if (failure.kind() != ErrorKind::Failed) throw;
            throw Error(failure.kind(), failure.message() + " (is this the address of a template server?)",
                        failure.file(), failure.key());
        }
    }

    static std::vector<TemplateOverview> newerOnes() {
        std::vector<TemplateOverview> newer = templateOverviews(openCatalogue());
        std::erase_if(newer, [](const TemplateOverview& each) { return !each.newerOffered; });
        return newer;
    }

    std::string newerText(const std::vector<TemplateOverview>& newer) const {
        if (newer.empty()) return "";
        return ", newer versions of " + counted(newer.size(), "installed one") +
               (installsNewer_ ? "" : " (templates update --all installs them)");
    }

    /// One that fails does not keep the others from being installed; the first failure is the command's.
    void install(const std::vector<TemplateOverview>& newer, Console& console, const std::stop_token& stop) {
        const TemplateInstaller installer(console, stop, true);
        std::optional<Error> first;
        for (const TemplateOverview& each : newer) {
            const auto failure = installedOrFailed(installer, each);
            if (failure && first) console.error(*failure);
            if (failure && !first) first = failure;
            if (failure && failure->kind() == ErrorKind::Cancelled) break;
        }
        if (first) throw Error(*first);
    }

    std::optional<Error> installedOrFailed(const TemplateInstaller& installer,
                                           const TemplateOverview& offered) {
        if (offered.needsNewerVersion)
            return Error(ErrorKind::Failed,
                         "the newer version needs a newer version of the program: " +
                             versionsText(static_cast<float>(offered.minVersion)),
                         offered.name);
        const InstallReport report = installer.fromUrl(offered.templateUrl, offered.sId);
        if (report.failure) return report.failure;
        if (report.result.outcome == InstallOutcome::NothingInstalled)
            return Error(ErrorKind::Template, report.result.remark, offered.templateUrl);
        installer.tell(report.result, "installed");
        ++installed_;
        return std::nullopt;
    }

    bool installsNewer_ = false;
    int64_t installed_ = 0;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesUpdateCommand() { return std::make_unique<TemplatesUpdateCommand>(); }

}  // namespace multiscene::cli
