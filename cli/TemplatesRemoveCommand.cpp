#include <cstdlib>

#include "app/catalogue/InstalledTemplates.h"
#include "app/catalogue/SampleTemplates.h"
#include "app/installation/TemplateInstallation.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/FencedWork.h"
#include "cli/TemplateInstaller.h"
#include "platform/base/Activity.h"

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

    int execute(Console& console, const JobSettings& settings) override {
        FencedWork fenced(console, settings);
        InstallResult removed{InstallOutcome::Removed, "", {}, ""};
        fenced.run(
            {wanted_, {}, {}},
            [this](Workplace& place) {
                const InstalledTemplate found = installed();
                for (const QVTempletDataModel& record : found.records)
                    place.ask({found.name, std::to_string(record.sId())});
                return 0;
            },
            [&](const std::vector<std::string>& told) {
                removed.name = told.front();
                if (told.size() == 2) removed.sIds.push_back(std::strtoll(told[1].c_str(), nullptr, 10));
            });
        Errand errand{wanted_, {}, {}};
        errand.change = CatalogueChange{[name = removed.name](QVDataManager& catalogue) {
                                            return TemplateInstallation::isMade(catalogue, name, "");
                                        },
                                        [&](Console& shown) { tell(shown, removed); }};
        return fenced.run(
            errand,
            [&](Workplace& place) {
                platform::activity::stage("removing");
                const auto catalogue = openCatalogue();
                InstallOptions options;
                options.isCancelled = [stop = place.stop] { return stop.stop_requested(); };
                tell(place.console,
                     TemplateInstallation(*catalogue, removed.name, committing(options, place)).remove());
                return 0;
            },
            [&](const std::vector<std::string>&) { fenced.commit(); });
    }

  private:
    /// In a worker: templates have written the names by which they are found.
    InstalledTemplate installed() const {
        QVDataManager catalogue;
        if (auto found = findInstalledTemplate(catalogue, wanted_)) return std::move(*found);
        throw Error(ErrorKind::Template,
                    findSampleTemplate(wanted_)
                        ? "ships with the program and is not installed; nothing was removed"
                        : "no template of this id or name is installed; nothing was removed",
                    wanted_);
    }

    static void tell(Console& console, const InstallResult& result) {
        if (console.isJson())
            return console.event("done", {{"outcome", "removed"},
                                          {"name", result.name},
                                          {"ids", Value::Array(result.sIds.begin(), result.sIds.end())}});
        console.line("removed " + result.name);
    }

    std::string wanted_;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesRemoveCommand() { return std::make_unique<TemplatesRemoveCommand>(); }

}  // namespace multiscene::cli
