#include <cstdlib>
#include <optional>

#include "app/Other/QVDownloadInfoManager.h"
#include "app/program/ProgramVersion.h"
#include "app/program/Settings.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/ServerList.h"
#include "cli/TemplateInstaller.h"
#include "platform/net/HttpDownload.h"

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

    int execute(Console& console, const JobSettings& settings) override {
        FencedWork fenced(console, settings);
        const JobFolder job([&fenced] { return fenced.isCancelled(); });
        const std::string address = list_.serverAddress();
        list_.setServerAddress(address);
        fetch(fenced, job);
        saveSetting(kServerSetting, address);
        fenced.run(
            {address, reachOfServerList(list_), {}},
            [this](Workplace& place) {
                lookForNewer(place);
                return 0;
            },
            [this](const std::vector<std::string>& told) { hear(told); });
        if (installsNewer_) install({fenced, job, true}, console);
        if (console.isJson())
            console.event("done", {{"server", platform::withoutCredentials(address)},
                                   {"offered", offered_},
                                   {"newer", static_cast<int64_t>(newer_.size())},
                                   {"installed", installed_}});
        return 0;
    }

  private:
    /// A newer version, as a worker has told of it.
    struct Newer {
        std::string url, name;
        int64_t number = 0;
        std::string needed;  ///< the version of the program, where this one is too old
    };

    void fetch(FencedWork& fenced, const JobFolder& job) const {
        try {
            fetchServerList(fenced, job, list_);
        } catch (const Error& failure) {
            if (failure.kind() != ErrorKind::Failed) throw;
            throw Error(failure.kind(), failure.message() + " (is this the address of a template server?)",
                        failure.file(), failure.key());
        }
    }

    /// In the worker.
    void lookForNewer(Workplace& place) const {
        QVDataManager catalogue;
        std::vector<TemplateOverview> newer = templateOverviews(catalogue, list_);
        std::erase_if(newer, [](const TemplateOverview& each) { return !each.newerOffered; });
        const size_t offered = list_.severTemplets().size();
        if (!place.console.isJson())
            place.console.line(platform::withoutCredentials(list_.serverAddress()) + " offers " +
                               counted(offered, "template") + newerText(newer.size()));
        place.ask({std::to_string(offered)});
        for (const TemplateOverview& each : newer)
            place.ask({each.templateUrl, each.name, std::to_string(each.sId),
                       each.needsNewerVersion ? versionsText(static_cast<float>(each.minVersion)) : ""});
    }

    void hear(const std::vector<std::string>& told) {
        constexpr size_t most = 100'000, fields = 4;
        if (told.size() == 1) offered_ = std::strtoll(told[0].c_str(), nullptr, 10);
        if (told.size() != fields || newer_.size() == most) return;
        newer_.push_back({told[0], told[1], std::strtoll(told[2].c_str(), nullptr, 10), told[3]});
    }

    std::string newerText(size_t newer) const {
        if (newer == 0) return "";
        return ", newer versions of " + counted(newer, "installed one") +
               (installsNewer_ ? "" : " (templates update --all installs them)");
    }

    /// One that fails does not keep the others from being installed; the first failure is the command's.
    void install(TemplateInstaller installer, Console& console) {
        std::optional<Error> first;
        for (const Newer& each : newer_) {
            const auto failure = installedOrFailed(installer, each);
            if (failure && first) console.error(*failure);
            if (failure && !first) first = failure;
            if (failure && failure->kind() == ErrorKind::Cancelled) break;
        }
        if (first) throw Error(*first);
    }

    std::optional<Error> installedOrFailed(TemplateInstaller& installer, const Newer& offered) {
        if (!offered.needed.empty())
            return Error(ErrorKind::Failed,
                         "the newer version needs a newer version of the program: " + offered.needed,
                         offered.name);
        try {
            installer.fromUrl(offered.url, offered.number, "installed");
        } catch (const Error& failure) {
            return failure;
        }
        ++installed_;
        return std::nullopt;
    }

    QVDownloadInfoManager list_;
    bool installsNewer_ = false;
    std::vector<Newer> newer_;
    int64_t offered_ = 0, installed_ = 0;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesUpdateCommand() { return std::make_unique<TemplatesUpdateCommand>(); }

}  // namespace multiscene::cli
