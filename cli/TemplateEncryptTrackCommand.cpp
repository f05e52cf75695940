#include <filesystem>

#include "cli/Commands.h"
#include "format/TrackFile.h"
#include "platform/base/File.h"

namespace multiscene::cli {

namespace fs = std::filesystem;

namespace {

class TemplateEncryptTrackCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("TRACK.xml", "A plain corner-pin track",
                       [this](const std::string& value) { plain_ = value; });
        arguments.option(
            "-o,--output", "FILE", "The track as templates keep it",
            [this](const std::string& value) { stored_ = value; }, Occurs::Once);
        arguments.example("multiscene template encrypt-track sign.xml -o my-template/track/sign.xml");
    }

    int run(Console& console, std::stop_token) override {
        const auto plain = platform::readFile(plain_, TrackFile::maxBytes, platform::ErrorKind::Input);
        const auto stored = TrackFile::encryptedAES256DataUsingDefaultKey(plain, plain_.string());
        platform::writeFileAtomically(stored_, {reinterpret_cast<const char*>(stored.data()), stored.size()});
        const auto frames = static_cast<int64_t>(TrackFile::frames(plain).size());
        if (console.isJson())
            console.event("done", {{"output", stored_.string()}, {"frames", frames}});
        else
            console.line("wrote " + stored_.string() + ", " + std::to_string(frames) +
                         (frames == 1 ? " frame" : " frames"));
        return 0;
    }

  private:
    fs::path plain_, stored_;
};

}  // namespace

std::unique_ptr<Command> makeTemplateEncryptTrackCommand() {
    return std::make_unique<TemplateEncryptTrackCommand>();
}

}  // namespace multiscene::cli
