#include "cli/Commands.h"
#include "cli/RenderOptions.h"
#include "cli/VideoCommand.h"

namespace multiscene::cli {

namespace {

class MakeCommand : public VideoCommand {
  public:
    void declare(Arguments& arguments) override {
        declareSource(arguments, request_, false);
        declareInputs(arguments, request_);
        declareFormat(arguments, request_);
        declareFit(arguments, request_);
        declareRenderer(arguments, request_);
        declareJudgement(arguments, request_);
        declareVideo(arguments, request_);
        arguments.example(
            "multiscene make sunny-day --text title=Hello message='For\\nyou' --photo photo=me.jpg -o "
            "hello.mp4");
        arguments.example("multiscene make my-template.zip --media inputs.json --music none -o out.mp4");
    }
};

}  // namespace

std::unique_ptr<Command> makeMakeCommand() { return std::make_unique<MakeCommand>(); }

}  // namespace multiscene::cli
