#include "app/Job/FramesJob.h"
#include "cli/Commands.h"
#include "cli/RenderOptions.h"

namespace multiscene::cli {

namespace {

class FramesCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        declareSource(arguments, request_, true);
        declareInputs(arguments, request_);
        declareFormat(arguments, request_);
        declareFit(arguments, request_);
        declareJudgement(arguments, request_);
        declareSelection(arguments, request_.selection);
        arguments.flag("--alpha", "Keep transparency; else the pictures are what the video shows",
                       request_.keepsAlpha);
        arguments.option(
            "-o,--output", "DIR",
            "The folder for frame-000000.png and so on; such pictures of earlier runs go",
            [this](const std::string& value) { request_.output = value; }, Occurs::Once);
        arguments.example("multiscene frames templates/minimal --text text=Hello --at 0,45,89 -o pictures");
    }

    int run(Console& console, std::stop_token stop) override {
        console.jobDone(writeFrames(request_, console, std::move(stop)));
        return 0;
    }

  private:
    FramesRequest request_;
};

}  // namespace

std::unique_ptr<Command> makeFramesCommand() { return std::make_unique<FramesCommand>(); }

}  // namespace multiscene::cli
