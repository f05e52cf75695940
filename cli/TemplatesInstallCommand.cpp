#include <filesystem>

#include "app/Other/QVDownloadInfoManager.h"
#include "app/Other/QVSceneInstallManager.h"
#include "app/Other/SceneJudge.h"
#include "app/Other/Strings.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "platform/base/Clock.h"
#include "platform/base/DispatchQueue.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

using platform::DispatchQueue;
using platform::Error;
using platform::ErrorKind;
using platform::Value;
namespace fs = std::filesystem;

namespace {

struct OutcomeText {
    const char* word;  ///< in JSON lines
    const char* before;
    const char* after;
    bool isInstalled;  ///< something was installed
};

OutcomeText textOf(InstallOutcome outcome) {
    switch (outcome) {
        case InstallOutcome::Installed:
            return {"installed", "installed ", "", true};
        case InstallOutcome::Replaced:
            return {"replaced", "installed ", " in place of the version of before", true};
        default:
            return {"alreadyInstalled", "nothing was installed: ",
                    " is installed already (--replace takes the archive's version)", false};
    }
}

/// What the installation says while it runs. Its failure is reported as the command's own.
class ConsoleDisplay : public SceneInstallDisplay {
  public:
    explicit ConsoleDisplay(Console& console) : console_(console) {}
    void showInfo(const std::string& text) override { console_.status(text); }

  private:
    Console& console_;
};

class TemplatesInstallCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("ID|URL|ZIP",
                       "Id or name of an offered template, the address of an archive, or an archive on disk "
                       "(which stays where it is)",
                       [this](const std::string& value) { source_ = value; });
        arguments.flag("--replace", "Replace the installed template of this name", replaces_);
        declareServer(arguments);
        arguments.example("multiscene templates install 1000");
        arguments.example("multiscene templates install birthday.zip --replace");
    }

    int run(Console& console, std::stop_token stop) override {
        openCatalogue();
        const InstallReport report = installed(console, stop);
        if (report.failure) throw nothingInstalled(*report.failure);
        if (report.result.outcome == InstallOutcome::NothingInstalled)
            throw nothingInstalled(Error(ErrorKind::Template, report.result.remark, source_));
        print(console, report.result);
        return 0;
    }

  private:
    static Error nothingInstalled(const Error& error) {
        return Error(error.kind(), error.message() + "; nothing was installed", error.file(), error.key());
    }

    InstallOptions options(Console& console, const std::stop_token& stop) const {
        InstallOptions options;
        options.replace = replaces_;
        options.judge = requirePlayableScenes;
        options.isCancelled = [stop] { return stop.stop_requested(); };
        options.onReceived = [&console, start = platform::monotonicSeconds()](uint64_t received,
                                                                              uint64_t total) {
            const double seconds = platform::monotonicSeconds() - start;
            DispatchQueue::main().async(
                [=, &console] { console.downloadProgress(received, total, seconds); });
        };
        return options;
    }

    InstallReport installed(Console& console, const std::stop_token& stop) const {
        auto& manager = QVSceneInstallManager::sharedInstance();
        const auto display = std::make_shared<ConsoleDisplay>(console);
        manager.setDisplay(display);
        std::optional<InstallReport> report;
        const auto completion = [&](const InstallReport& ending) { report = ending; };
        std::error_code ignored;
        if (!platform::isHttpUrl(source_) && fs::is_regular_file(source_, ignored))
            manager.installSceneWithZipPath(source_, fs::path(source_).stem().string(),
                                            options(console, stop), completion);
        else
            manager.installSceneZipWithUrl(urlOf(stop), options(console, stop), completion);
        DispatchQueue::main().pumpUntil([&] { return report.has_value(); });
        return *report;
    }

    std::string urlOf(const std::stop_token& stop) const {
        if (platform::isHttpUrl(source_)) return source_;
        const QVDownloadInfoManager& list = QVDownloadInfoManager::sharedInstance();
        std::error_code ignored;
        if (!fs::exists(list.saveInfoPath(), ignored) && !list.serverAddress().empty())
            list.downloadInfo([&] { return stop.stop_requested(); });
        const auto offered = list.findSeverTemplet(source_);
        if (!offered)
            throw Error(ErrorKind::Usage,
                        "neither an archive nor the id or name of an offered template (multiscene templates "
                        "update fetches what is offered); nothing was installed",
                        source_);
        requireSupported(*offered);
        return list.completeUrl(offered->templateUrl());
    }

    void requireSupported(const QVSeverTempletDataModel& offered) const {
        offered.checkShowTemplateVersionSupport([&](const AlertView& alert) {
            throw Error(ErrorKind::Failed, alert.message + " Nothing was installed.", source_);
        });
    }

    static void print(Console& console, const InstallResult& result) {
        const OutcomeText text = textOf(result.outcome);
        if (!console.isJson())
            return console.status(text.before + result.name + " (" + std::to_string(result.sIds.front()) +
                                  ")" + text.after);
        console.event("done", {{"outcome", text.word},
                               {"installed", text.isInstalled},
                               {"name", result.name},
                               {"ids", Value::Array(result.sIds.begin(), result.sIds.end())}});
    }

    std::string source_;
    bool replaces_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesInstallCommand() { return std::make_unique<TemplatesInstallCommand>(); }

}  // namespace multiscene::cli
