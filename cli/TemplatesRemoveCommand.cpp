#include "app/catalogue/InstalledTemplates.h"
#include "app/catalogue/SampleTemplates.h"
#include "app/installation/TemplateInstallation.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
using platform::Value;

namespace {

class TemplatesRemoveCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("TEMPLATE", "Id or name of an installed template",
                       [this](const std::string& value) { wanted_ = value; });
        arguments.example("multiscene templates remove 1000");
    }

    int run(Console& console, std::stop_token) override {
        const auto opened = openCatalogue();
        QVDataManager& catalogue = *opened;
        const auto found = findInstalledTemplate(catalogue, wanted_);
        if (!found)
            throw Error(ErrorKind::Template,
                        findSampleTemplate(wanted_)
                            ? "ships with the program and is not installed; nothing was removed"
                            : "no template of this id or name is installed; nothing was removed",
                        wanted_);
        const InstallResult result = TemplateInstallation(catalogue, found->name).remove();
        if (console.isJson())
            console.event("done", {{"outcome", "removed"},
                                   {"name", result.name},
                                   {"ids", Value::Array(result.sIds.begin(), result.sIds.end())}});
        else
            console.line("removed " + result.name);
        return 0;
    }

  private:
    std::string wanted_;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesRemoveCommand() { return std::make_unique<TemplatesRemoveCommand>(); }

}  // namespace multiscene::cli
