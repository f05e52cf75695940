#include "app/job/FramesJob.h"
#include "app/job/OutputFile.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "cli/RenderOptions.h"
#include "cli/SourceReach.h"

namespace multiscene::cli {

namespace {

class FramesCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        declareSource(arguments, request_, true);
        declareInputs(arguments, request_);
        declareFormat(arguments, request_);
        declareFit(arguments, request_);
        declareRenderer(arguments, request_);
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

  protected:
    Errand prepare(const std::filesystem::path& folder) override {
        const Errand errand = errandOf(request_);
        output_ = outputFolder(request_.output);
        request_.output = folder / "pictures";
        return errand;
    }

    int work(Console& console, std::stop_token stop, const std::function<void()>& publish) override {
        JobSummary summary = writeFrames(request_, console, std::move(stop));
        flush(request_.output);
        publish();
        summary.output = output_;
        console.jobDone(summary);
        return 0;
    }

    void publish() override { movePictures(request_.output, output_, cancelling()); }

  private:
    FramesRequest request_;
    std::filesystem::path output_;
};

}  // namespace

std::unique_ptr<Command> makeFramesCommand() { return std::make_unique<FramesCommand>(); }

}  // namespace multiscene::cli
