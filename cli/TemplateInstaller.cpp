#include "cli/TemplateInstaller.h"

#include <filesystem>

#include "app/template/SceneJudge.h"
#include "platform/base/Clock.h"
#include "platform/base/DispatchQueue.h"

namespace multiscene::cli {

using platform::DispatchQueue;
using platform::Error;
using platform::ErrorKind;
using platform::Value;

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

}  // namespace

InstallOptions TemplateInstaller::options() const {
    InstallOptions options;
    options.replace = replaces_;
    options.judge = requirePlayableScenes;
    options.isCancelled = [stop = stop_] { return stop.stop_requested(); };
    options.onReceived = [&console = console_, start = platform::monotonicSeconds()](uint64_t received,
                                                                                     uint64_t total) {
        const double seconds = platform::monotonicSeconds() - start;
        DispatchQueue::main().async([=, &console] { console.downloadProgress(received, total, seconds); });
    };
    return options;
}

template <typename Start>
InstallReport TemplateInstaller::run(Start start) const {
    const auto display = std::make_shared<ConsoleDisplay>(console_);
    std::optional<InstallReport> report;
    QVSceneInstallManager manager(catalogue_);
    manager.setDisplay(display);
    start(manager, [&](const InstallReport& ending) { report = ending; });
    DispatchQueue::main().pumpUntil([&] { return report.has_value(); });
    return *report;
}

InstallReport TemplateInstaller::fromArchive(const std::string& zip) const {
    return run([&](QVSceneInstallManager& manager, const QVSceneInstallManager::Completion& completion) {
        manager.installSceneWithZipPath(zip, std::filesystem::path(zip).stem().string(), options(),
                                        completion);
    });
}

InstallReport TemplateInstaller::fromUrl(const std::string& url, std::optional<int64_t> offeredNumber) const {
    InstallOptions wanted = options();
    wanted.offeredNumber = offeredNumber;
    InstallReport report =
        run([&](QVSceneInstallManager& manager, const QVSceneInstallManager::Completion& completion) {
            manager.installSceneZipWithUrl(url, wanted, completion);
        });
    if (offeredNumber && report.failure && report.failure->file() == url &&
        report.failure->kind() == ErrorKind::Failed)
        report.failure = Error(
            ErrorKind::Failed,
            report.failure->message() + " (the list of templates may be old: multiscene templates update)",
            url);
    return report;
}

void TemplateInstaller::tell(const InstallResult& result, const std::string& name) const {
    const OutcomeText text = textOf(result.outcome);
    if (!console_.isJson())
        return console_.status(text.before + result.name + " (" + std::to_string(result.sIds.front()) + ")" +
                               text.after);
    console_.event(name, {{"outcome", text.word},
                          {"installed", text.isInstalled},
                          {"name", result.name},
                          {"ids", Value::Array(result.sIds.begin(), result.sIds.end())}});
}

}  // namespace multiscene::cli
