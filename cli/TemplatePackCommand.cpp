#include <filesystem>

#include "app/author/TemplatePacking.h"
#include "cli/AuthorCommand.h"
#include "cli/Commands.h"
#include "cli/Table.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
namespace fs = std::filesystem;

namespace {

constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;

class TemplatePackCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("DIR", "The template's folder", [this](const std::string& value) { folder_ = value; });
        arguments.option("-o,--output", "FILE.zip", "The archive; else NAME.zip in the current folder",
                         [this](const std::string& value) { archive_ = value; });
        arguments.example("multiscene template pack templates/minimal");
    }

    int run(Console& console, std::stop_token) override {
        const fs::path folder = (fs::absolute(folder_) / "").lexically_normal().parent_path();
        const fs::path archive =
            fs::absolute(archive_.empty() ? fs::path(folder.filename().string() + ".zip") : archive_);
        if (*archive.lexically_normal().lexically_relative(folder).begin() != "..")
            throw Error(ErrorKind::Usage, "the archive would lie in the template; name another place with -o",
                        archive.string());
        const auto bytes =
            static_cast<int64_t>(packTemplate(folder, archive, judgeAloud(console, "nothing was packed")));
        if (console.isJson())
            console.event("done", {{"output", archive.string()}, {"bytes", bytes}});
        else
            console.line("packed " + archive.string() + ", " +
                         megabyteText(static_cast<double>(bytes) / kBytesPerMegabyte));
        return 0;
    }

  private:
    fs::path folder_, archive_;
};

}  // namespace

std::unique_ptr<Command> makeTemplatePackCommand() { return std::make_unique<TemplatePackCommand>(); }

}  // namespace multiscene::cli
