#include "app/Job/VideoJob.h"
#include "cli/Commands.h"
#include "cli/RenderOptions.h"

namespace multiscene::cli {

namespace {

class RenderCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("GROUP.plist", "A scene-group file, played against the catalogue of the data folder",
                       [this](const std::string& value) { request_.source = value; });
        declareFormat(arguments, request_, Occurs::Once);
        declareVideo(arguments, request_);
        declareJudgement(arguments, request_);
        arguments.example("multiscene render sceneGroup.plist --size 720x1280 --fps 30 -o out.mp4");
    }

    int run(Console& console, std::stop_token stop) override {
        request_.isSceneGroupFile = true;
        console.jobDone(makeVideo(request_, console, std::move(stop)));
        return 0;
    }

  private:
    VideoRequest request_;
};

}  // namespace

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

}  // namespace multiscene::cli
