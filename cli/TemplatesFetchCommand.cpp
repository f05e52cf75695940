#include <algorithm>
#include <filesystem>
#include <string_view>

#include "app/job/JobFolder.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/FencedWork.h"
#include "cli/ServerList.h"
#include "platform/base/Activity.h"
#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "platform/fence/Sandbox.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

/// What a server shows of a template before it is installed.
struct Shown {
    std::string_view name;
    uint64_t mostBytes;
    const std::string& (QVSeverTempletDataModel::*url)() const;
};
constexpr Shown kShown[] = {
    {"thumbnail", platform::limitOf("maxThumbnailBytes"), &QVSeverTempletDataModel::thumbUrl},
    {"preview", platform::limitOf("maxPictureBytes"), &QVSeverTempletDataModel::videoPreviewUrl},
};

class TemplatesFetchCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("ID", "Id or name of an offered template",
                       [this](const std::string& value) { wanted_ = value; });
        arguments.word("WHAT", "thumbnail or preview", [this](const std::string& value) {
            const auto found = std::find_if(std::begin(kShown), std::end(kShown),
                                            [&](const Shown& each) { return each.name == value; });
            if (found == std::end(kShown)) throw Error(ErrorKind::Usage, "neither thumbnail nor preview");
            shown_ = found;
        });
        arguments.option(
            "-o,--output", "FILE", "Where it goes, as the server has it",
            [this](const std::string& value) { output_ = value; }, Occurs::Once);
        declareServer(arguments, list_);
        arguments.example("multiscene templates fetch 1000 thumbnail -o party.jpg");
    }

    int execute(Console& console, const JobSettings& settings) override {
        FencedWork fenced(console, settings);
        const JobFolder job([&fenced] { return fenced.isCancelled(); });
        list_.setServerAddress(list_.serverAddress());
        const std::filesystem::path fetched = job.file("fetched");
        download(fenced, job, address(fenced), fetched);
        platform::moveFile(fetched, output_);
        if (console.isJson())
            console.event("done", {{"output", output_}});
        else
            console.line("fetched " + output_);
        return 0;
    }

  private:
    std::string address(FencedWork& fenced) {
        std::string url;
        fenced.run(
            {wanted_, reachOfServerList(list_), {}},
            [this](Workplace& place) {
                const auto offered = list_.findSeverTemplet(wanted_);
                if (!offered)
                    throw Error(ErrorKind::Template, "no template of this id or name is offered", wanted_);
                const std::string& location = ((*offered).*(shown_->url))();
                if (location.empty())
                    throw Error(ErrorKind::Template, "the server shows none of it", wanted_);
                place.ask({list_.completeUrl(location)});
                return 0;
            },
            [&url](const std::vector<std::string>& told) { url = told.empty() ? "" : told.front(); });
        if (!platform::isHttpUrl(url))
            throw Error(ErrorKind::Template, "is no http or https address",
                        platform::withoutCredentials(url));
        return url;
    }

    void download(FencedWork& fenced, const JobFolder& job, const std::string& url,
                  const std::filesystem::path& file) const {
        fenced.run({platform::withoutCredentials(url), platform::reachOfNetwork(), job.path()},
                   [&](Workplace& place) {
                       platform::activity::stage("downloading");
                       platform::HttpDownloadOptions transfer;
                       transfer.maxBytes = shown_->mostBytes;
                       transfer.attempts = 1;
                       transfer.isCancelled = [&place] { return place.stop.stop_requested(); };
                       platform::downloadToFile(url, file, transfer);
                       return 0;
                   });
    }

    QVDownloadInfoManager list_;
    std::string wanted_, output_;
    const Shown* shown_ = nullptr;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesFetchCommand() { return std::make_unique<TemplatesFetchCommand>(); }

}  // namespace multiscene::cli
