#include "app/Other/QVDownloadInfoManager.h"
#include "app/Other/Settings.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"

namespace multiscene::cli {

namespace {

class TemplatesUpdateCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        declareServer(arguments);
        arguments.example("multiscene templates update --server https://templates.example.org/");
    }

    int run(Console& console, std::stop_token stop) override {
        const QVDownloadInfoManager& list = QVDownloadInfoManager::sharedInstance();
        const std::string address = list.serverAddress();
        list.downloadInfo([&] { return stop.stop_requested(); });
        saveSetting(kServerSetting, address);
        const auto offered = static_cast<int64_t>(list.severTemplets().size());
        if (console.isJson())
            console.event("done", {{"server", address}, {"offered", offered}});
        else
            console.line(address + " offers " + std::to_string(offered) +
                         (offered == 1 ? " template" : " templates"));
        return 0;
    }
};

}  // namespace

std::unique_ptr<Command> makeTemplatesUpdateCommand() { return std::make_unique<TemplatesUpdateCommand>(); }

}  // namespace multiscene::cli
