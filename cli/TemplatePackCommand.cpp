#include <filesystem>
#include <optional>

#include "app/author/TemplatePacking.h"
#include "app/job/OutputFile.h"
#include "cli/AuthorCommand.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "cli/Table.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
namespace fs = std::filesystem;

namespace {

constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;

class TemplatePackCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("DIR", "The template's folder", [this](const std::string& value) { folder_ = value; });
        arguments.option("-o,--output", "FILE.zip", "The archive; else NAME.zip in the current folder",
                         [this](const std::string& value) { archive_ = value; });
        arguments.example("multiscene template pack templates/minimal");
    }

  protected:
    Errand prepare(const fs::path& folder) override {
        folder_ = (fs::absolute(folder_) / "").lexically_normal().parent_path();
        const fs::path archive =
            fs::absolute(archive_.empty() ? fs::path(folder_.filename().string() + ".zip") : archive_);
        requireOutside(folder_, archive, "the archive");
        output_.emplace(archive);
        packed_ = folder / "packed.zip";
        Errand errand{folder_.string(), {}, {}};
        errand.reach.read.push_back(folder_);
        return errand;
    }

    int work(Console& console, std::stop_token, const std::function<void()>& publish) override {
        const auto bytes =
            static_cast<int64_t>(packTemplate(folder_, packed_, judgeAloud(console, "nothing was packed")));
        publish();
        if (console.isJson())
            console.event("done", {{"output", output_->path().string()}, {"bytes", bytes}});
        else
            console.line("packed " + output_->path().string() + ", " +
                         megabyteText(static_cast<double>(bytes) / kBytesPerMegabyte));
        return 0;
    }

    void publish() override { output_->publish(packed_, cancelling()); }

  private:
    fs::path folder_, archive_, packed_;
    std::optional<OutputFile> output_;
};

}  // namespace

std::unique_ptr<Command> makeTemplatePackCommand() { return std::make_unique<TemplatePackCommand>(); }

}  // namespace multiscene::cli
