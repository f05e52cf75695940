#include <cstdlib>
#include <filesystem>

#include "app/Other/QVDownloadInfoManager.h"
#include "app/program/ProgramVersion.h"
#include "app/server/UrlText.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/ServerList.h"
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

    int execute(Console& console, const JobSettings& settings) override {
        FencedWork fenced(console, settings);
        try {
            const JobFolder job([&fenced] { return fenced.isCancelled(); });
            install(fenced, job);
        } catch (const Error& failure) {
            if (isUnsettled(failure) || fenced.isCommitted()) throw;
            throw nothingInstalled(failure);
        }
        return 0;
    }

  private:
    /// What a worker has found in the server's list.
    struct Offer {
        std::string url;
        std::optional<int64_t> number;
    };

    static Error nothingInstalled(const Error& error) {
        return Error(error.kind(), error.message() + "; nothing was installed", error.file(), error.key());
    }

    void install(FencedWork& fenced, const JobFolder& job) {
        TemplateInstaller installer(fenced, job, replaces_);
        const bool isUrl = platform::isHttpUrl(source_);
        if (!isUrl && platform::isFile(source_)) return installer.fromArchive(source_, "done");
        list_.setServerAddress(list_.serverAddress());
        if (!isUrl && !list_.ageOfInfo() && !list_.serverAddress().empty())
            fetchServerList(fenced, job, list_);
        std::optional<Offer> offer;
        fenced.run(
            {platform::withoutCredentials(source_), reachOfServerList(list_), {}},
            [&](Workplace& place) {
                findOffer(place, isUrl);
                return 0;
            },
            [&](const std::vector<std::string>& told) { offer = offerOf(told); });
        if (offer) installer.fromUrl(offer->url, offer->number, "done");
    }

    /// In the worker: tells the offer, unless it is installed already.
    void findOffer(Workplace& place, bool isUrl) const {
        const auto offered = isUrl ? offeredAt(source_) : offeredAs(source_);
        if (offered) requireSupported(*offered);
        const std::string url = isUrl ? source_ : list_.completeUrl(offered->templateUrl());
        const std::optional<int64_t> number = isUrl ? std::nullopt : std::optional(offered->sId());
        QVDataManager catalogue;
        const auto known =
            replaces_ ? std::nullopt
                      : TemplateInstallation::alreadyInstalled(catalogue, templateNameOfUrl(url), number);
        if (known) return TemplateInstaller::tell(place.console, *known, "done");
        place.ask({url, number ? std::to_string(*number) : ""});
    }

    static Offer offerOf(const std::vector<std::string>& told) {
        if (told.size() != 2 || !platform::isHttpUrl(told[0]))
            throw Error(ErrorKind::Failed, "is no http or https address",
                        told.empty() ? "" : platform::withoutCredentials(told[0]));
        if (told[1].empty()) return {told[0], std::nullopt};
        return {told[0], std::strtoll(told[1].c_str(), nullptr, 10)};
    }

    std::optional<QVSeverTempletDataModel> offeredAt(const std::string& url) const {
        for (QVSeverTempletDataModel& offered : list_.severTemplets())
            if (list_.completeUrl(offered.templateUrl()) == url) return std::move(offered);
        return std::nullopt;
    }

    std::optional<QVSeverTempletDataModel> offeredAs(const std::string& numberOrName) const {
        auto offered = list_.findSeverTemplet(numberOrName);
        if (!offered)
            throw Error(ErrorKind::Template,
                        "neither an archive nor the id or name of an offered template (multiscene templates "
                        "update fetches what is offered)",
                        numberOrName);
        return offered;
    }

    void requireSupported(const QVSeverTempletDataModel& offered) const {
        offered.checkShowTemplateVersionSupport([&](const AlertView& alert) {
            throw Error(ErrorKind::Failed, alert.message + " (" + versionsText(offered.minVersion()) + ")",
                        platform::withoutCredentials(source_));
        });
    }

    QVDownloadInfoManager list_;
    std::string source_;
    bool replaces_ = false;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesInstallCommand() { return std::make_unique<TemplatesInstallCommand>(); }

}  // namespace multiscene::cli
