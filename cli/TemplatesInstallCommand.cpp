#include <filesystem>

#include "app/Other/QVDownloadInfoManager.h"
#include "app/program/ProgramVersion.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/TemplateInstaller.h"
#include "platform/base/File.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
namespace fs = std::filesystem;

namespace {

class TemplatesInstallCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("ID|URL|ZIP",
                       "Id or name of an offered template, the address of an archive, or an archive on disk "
                       "(which stays where it is)",
                       [this](const std::string& value) { source_ = value; });
        arguments.flag("--replace", "Replace the installed template of this name", replaces_);
        declareServer(arguments, list_);
        arguments.example("multiscene templates install 1000");
        arguments.example("multiscene templates install birthday.zip --replace");
    }

    int run(Console& console, std::stop_token stop) override {
        const TemplateInstaller installer(console, openCatalogue(), stop, replaces_);
        const InstallReport report = installed(installer, stop);
        if (report.failure) throw nothingInstalled(*report.failure);
        if (report.result.outcome == InstallOutcome::NothingInstalled)
            throw nothingInstalled(Error(ErrorKind::Template, report.result.remark, source_));
        installer.tell(report.result, "done");
        return 0;
    }

  private:
    static Error nothingInstalled(const Error& error) {
        return Error(error.kind(), error.message() + "; nothing was installed", error.file(), error.key());
    }

    InstallReport installed(const TemplateInstaller& installer, const std::stop_token& stop) const {
        const bool isUrl = platform::isHttpUrl(source_);
        if (!isUrl && platform::isFile(source_)) return installer.fromArchive(source_);
        const auto offered = isUrl ? offeredAt(source_) : offeredAs(source_, stop);
        if (offered) requireSupported(*offered);
        if (isUrl) return installer.fromUrl(source_);
        return installer.fromUrl(list_.completeUrl(offered->templateUrl()), offered->sId());
    }

    std::optional<QVSeverTempletDataModel> offeredAt(const std::string& url) const {
        for (QVSeverTempletDataModel& offered : list_.severTemplets())
            if (list_.completeUrl(offered.templateUrl()) == url) return std::move(offered);
        return std::nullopt;
    }

    std::optional<QVSeverTempletDataModel> offeredAs(const std::string& numberOrName,
                                                     const std::stop_token& stop) const {
        if (!list_.ageOfInfo() && !list_.serverAddress().empty())
            list_.downloadInfo([&] { return stop.stop_requested(); });
        auto offered = list_.findSeverTemplet(numberOrName);
        if (!offered)
            throw Error(ErrorKind::Template,
                        "neither an archive nor the id or name of an offered template (multiscene templates "
                        "update fetches what is offered); nothing was installed",
                        numberOrName);
        return offered;
    }

    void requireSupported(const QVSeverTempletDataModel& offered) const {
        offered.checkShowTemplateVersionSupport([&](const AlertView& alert) {
            throw Error(
                ErrorKind::Failed,
                alert.message + " (" + versionsText(offered.minVersion()) + "); nothing was installed",
                source_);
        });
    }

    QVDownloadInfoManager list_;
    std::string source_;
    bool replaces_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesInstallCommand() { return std::make_unique<TemplatesInstallCommand>(); }

}  // namespace multiscene::cli
