#include "app/job/TraceJob.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "cli/RenderOptions.h"
#include "cli/SourceReach.h"

namespace multiscene::cli {

namespace {

class TraceCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        declareSource(arguments, request_, true);
        declareInputs(arguments, request_);
        declareFormat(arguments, request_);
        declareFit(arguments, request_);
        declareJudgement(arguments, request_);
        declareSelection(arguments, request_.selection);
        arguments.flag("--draw", "Draw the frames too, as for a video", request_.draws);
        arguments.example("multiscene trace templates/minimal --at 0,30");
    }
    bool isResultPrinted() const override { return true; }

  protected:
    Errand prepare(const std::filesystem::path&) override { return errandOf(request_); }

    int work(Console& console, std::stop_token stop, const std::function<void()>&) override {
        console.reserveOutput();
        const auto writeLine = [&console](const std::string& line) { console.line(line); };
        console.jobDone(traceFrames(request_, writeLine, console, std::move(stop)));
        return 0;
    }

  private:
    TraceRequest request_;
};

}  // namespace

std::unique_ptr<Command> makeTraceCommand() { return std::make_unique<TraceCommand>(); }

}  // namespace multiscene::cli
