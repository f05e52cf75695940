#include <charconv>
#include <filesystem>
#include <optional>

#include "app/author/NewTemplate.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/FencedWork.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

int64_t sceneNumberOf(const std::string& text) {
    int64_t number = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size() || number < 1 || number > INT32_MAX)
        throw Error(ErrorKind::Usage, "\"" + text + "\" is not a whole number from 1 to 2147483647");
    return number;
}

class TemplateNewCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("NAME", "Name of the template, or the path of the folder to make",
                       [this](const std::string& value) { path_ = value; });
        arguments.option("--id", "N", "Number of its scene; else one that no installed template has",
                         [this](const std::string& value) { sId_ = sceneNumberOf(value); });
        arguments.example("multiscene template new birthday");
    }

    int execute(Console& console, const JobSettings& settings) override {
        const std::filesystem::path folder =
            std::filesystem::absolute(path_ / "").lexically_normal().parent_path();
        const std::string name = folder.filename().string();
        const int64_t sId = sId_ ? *sId_ : unusedNumber(console, settings, name);
        const std::string made = makeNewTemplate(folder.parent_path(), name, sId).string();
        if (console.isJson())
            console.event("done", {{"folder", made}, {"name", name}, {"id", sId}});
        else
            console.line("made " + made + ", a template to change: every key has its comment");
        return 0;
    }

  private:
    /// The program itself reads nothing that templates have written, names of installed ones included.
    static int64_t unusedNumber(Console& console, const JobSettings& settings, const std::string& name) {
        FencedWork fenced(console, settings);
        int64_t number = 0;
        fenced.run(
            {name, {}, {}},
            [&](Workplace& place) {
                QVDataManager catalogue;
                place.ask({std::to_string(unusedSceneNumber(catalogue, name))});
                return 0;
            },
            [&](const std::vector<std::string>& told) { number = sceneNumberOf(told.front()); });
        return number;
    }

    std::filesystem::path path_;
    std::optional<int64_t> sId_;
};

}  // namespace

std::unique_ptr<Command> makeTemplateNewCommand() { return std::make_unique<TemplateNewCommand>(); }

}  // namespace multiscene::cli
