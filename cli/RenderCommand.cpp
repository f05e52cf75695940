#include "cli/Commands.h"
#include "cli/RenderOptions.h"
#include "cli/VideoCommand.h"

namespace multiscene::cli {

namespace {

class RenderCommand : public VideoCommand {
  public:
    void declare(Arguments& arguments) override {
        request_.isSceneGroupFile = true;
        arguments.word("GROUP.plist", "A scene-group file, played against the catalogue of the data folder",
                       [this](const std::string& value) { request_.source = value; });
        declareFormat(arguments, request_, Occurs::Once);
        declareVideo(arguments, request_);
        declareJudgement(arguments, request_);
        arguments.example("multiscene render sceneGroup.plist --size 720x1280 --fps 30 -o out.mp4");
    }
};

}  // namespace

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

}  // namespace multiscene::cli
