#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "cli/ServerList.h"
#include "cli/Table.h"

namespace multiscene::cli {

namespace {

class TemplatesListCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.example("multiscene templates list");
        arguments.example("LC_ALL=ja_JP.UTF-8 multiscene templates list --json");
    }
    bool isResultPrinted() const override { return true; }

  protected:
    bool needsFolder() const override { return false; }

    Errand prepare(const std::filesystem::path&) override {
        list_.setServerAddress(list_.serverAddress());
        return {"", reachOfServerList(list_), {}};
    }

    int work(Console& console, std::stop_token, const std::function<void()>&) override {
        QVDataManager catalogue;
        const std::vector<TemplateOverview> overviews = templateOverviews(catalogue, list_);
        console.isJson() ? printEvents(console, overviews) : printTable(console, overviews);
        return 0;
    }

  private:
    void printEvents(Console& console, const std::vector<TemplateOverview>& overviews) const {
        for (const TemplateOverview& each : overviews) console.event("template", overviewFields(each));
        console.event("done", {{"templates", static_cast<int64_t>(overviews.size())},
                               {"timelineShare", list_.isWechatTimelineShare()}});
    }

    static void printTable(Console& console, const std::vector<TemplateOverview>& overviews) {
        if (overviews.empty())
            return console.line(
                "no template is installed, and none is offered: multiscene templates update "
                "fetches what a server offers");
        Table table({"ID", "NAME", "TITLE", "SIZE", "LENGTH", "PHOTOS", "STATE"});
        for (const TemplateOverview& each : overviews)
            table.add({std::to_string(each.sId), each.name, each.title, megabyteText(each.megabytes),
                       lengthText(each), std::to_string(each.photos), stateText(each)});
        console.write(table.text());
    }

    QVDownloadInfoManager list_;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesListCommand() { return std::make_unique<TemplatesListCommand>(); }

}  // namespace multiscene::cli
