#include <optional>

#include "app/Other/QVDownloadInfoManager.h"
#include "app/program/ProgramVersion.h"
#include "app/program/Settings.h"
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
        declareServer(arguments, list_);
        arguments.example("multiscene templates update --server https://templates.example.org/");
        arguments.example("multiscene templates update --all");
    }

    int run(Console& console, std::stop_token stop) override {
        const std::string address = list_.serverAddress();
        fetch(list_, stop);
        saveSetting(kServerSetting, address);
        const auto offered = static_cast<int64_t>(list_.severTemplets().size());
        const auto catalogue = openCatalogue();
        const std::vector<TemplateOverview> newer = newerOnes(*catalogue);
        if (!console.isJson())
            console.line(address + " offers " + counted(static_cast<size_t>(offered), "template") +
                         newerText(newer));
        if (installsNewer_) install(newer, {console, catalogue, stop, true}, console);
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

    std::vector<TemplateOverview> newerOnes(QVDataManager& catalogue) const {
        std::vector<TemplateOverview> newer = templateOverviews(catalogue, list_);
        std::erase_if(newer, [](const TemplateOverview& each) { return !each.newerOffered; });
        return newer;
    }

    std::string newerText(const std::vector<TemplateOverview>& newer) const {
        if (newer.empty()) return "";
        return ", newer versions of " + counted(newer.size(), "installed one") +
               (installsNewer_ ? "" : " (templates update --all installs them)");
    }

    /// One that fails does not keep the others from being installed; the first failure is the command's.
    void install(const std::vector<TemplateOverview>& newer, const TemplateInstaller& installer,
                 Console& console) {
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

    QVDownloadInfoManager list_;
    bool installsNewer_ = false;
    int64_t installed_ = 0;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesUpdateCommand() { return std::make_unique<TemplatesUpdateCommand>(); }

}  // namespace multiscene::cli
