#include <filesystem>

#include "app/intake/Intake.h"
#include "app/job/OutputFile.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "platform/base/File.h"
#include "platform/base/Json.h"

namespace multiscene::cli {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr const char* kMade[] = {"photo.jpg", "photo.png", "proxy.jpg"};

/// Judges a file that somebody has sent, and makes of it what is kept. Prints one line of JSON.
class IntakeCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("FILE", "A photo, video or sound",
                       [this](const std::string& value) { file_ = fs::absolute(value); });
        arguments.word("FOLDER", "For what is made of it",
                       [this](const std::string& value) { output_ = value; });
    }

  protected:
    Errand prepare(const fs::path& folder) override {
        outputFolder(output_);
        made_ = folder;
        Errand errand;
        errand.source = file_.string();
        errand.reach.read.push_back(file_);
        return errand;
    }

    int work(Console& console, std::stop_token stop, const std::function<void()>& publish) override {
        const TakenIn taken = takeIn(file_, made_, stop);
        for (const char* name : kMade)
            if (platform::isFile(made_ / name)) flush(made_ / name);
        publish();
        Value::Dictionary line{{"event", "intake"},
                               {"kind", nameOf(taken.kind)},
                               {"width", taken.width},
                               {"height", taken.height},
                               {"seconds", taken.seconds}};
        if (taken.kind == TakenIn::Kind::Photo) line["file"] = taken.file.filename().string();
        console.line(platform::jsonText(line));
        return 0;
    }

    void publish() override {
        for (const char* name : kMade)
            if (fs::is_regular_file(fs::symlink_status(made_ / name)))
                platform::moveFile(made_ / name, output_ / name);
    }

  private:
    fs::path file_, output_, made_;
};

}  // namespace

std::unique_ptr<Command> makeIntakeCommand() { return std::make_unique<IntakeCommand>(); }

}  // namespace multiscene::cli
