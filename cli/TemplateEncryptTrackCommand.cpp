#include <filesystem>
#include <optional>

#include "app/job/OutputFile.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "format/TrackFile.h"
#include "platform/base/File.h"

namespace multiscene::cli {

namespace fs = std::filesystem;

namespace {

class TemplateEncryptTrackCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("TRACK.xml", "A plain corner-pin track",
                       [this](const std::string& value) { plain_ = value; });
        arguments.option(
            "-o,--output", "FILE", "The track as templates keep it",
            [this](const std::string& value) { stored_ = value; }, Occurs::Once);
        arguments.example("multiscene template encrypt-track sign.xml -o my-template/track/sign.xml");
    }

  protected:
    Errand prepare(const fs::path& folder) override {
        output_.emplace(stored_);
        encrypted_ = folder / "track";
        Errand errand{plain_.string(), {}, {}};
        errand.reach.read.push_back(plain_);
        return errand;
    }

    int work(Console& console, std::stop_token, const std::function<void()>& publish) override {
        const auto plain = platform::readFile(plain_, TrackFile::maxBytes, platform::ErrorKind::Input);
        const auto stored = TrackFile::encryptedAES256DataUsingDefaultKey(plain, plain_.string());
        platform::writeFileAtomically(encrypted_,
                                      {reinterpret_cast<const char*>(stored.data()), stored.size()});
        const auto frames = static_cast<int64_t>(TrackFile::frames(plain).size());
        publish();
        if (console.isJson())
            console.event("done", {{"output", stored_.string()}, {"frames", frames}});
        else
            console.line("wrote " + stored_.string() + ", " + std::to_string(frames) +
                         (frames == 1 ? " frame" : " frames"));
        return 0;
    }

    void publish() override { output_->publish(encrypted_, cancelling()); }

  private:
    fs::path plain_, stored_, encrypted_;
    std::optional<OutputFile> output_;
};

}  // namespace

std::unique_ptr<Command> makeTemplateEncryptTrackCommand() {
    return std::make_unique<TemplateEncryptTrackCommand>();
}

}  // namespace multiscene::cli
