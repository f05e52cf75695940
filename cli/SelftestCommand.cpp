#include <filesystem>

#include "app/job/JobFolder.h"
#include "cli/Commands.h"
#include "cli/SignalQueue.h"
#include "cli/Table.h"
#include "platform/fence/SelfTest.h"
#include "platform/fence/Supervisor.h"
#include "platform/gl/GLContext.h"

namespace multiscene::cli {

using platform::AttemptResult;
using platform::Channel;
using platform::Error;
using platform::Message;
using platform::SandboxState;

namespace {

const char* wordOf(const AttemptResult& result) {
    if (result.isDenied) return "denied";
    return result.hasNoWall ? "allowed (no wall here)" : "ALLOWED";
}

class SelftestCommand : public Command {
  public:
    void declare(Arguments& arguments) override { arguments.example("multiscene selftest"); }

    int execute(Console& console, const JobSettings& settings) override {
        const SignalQueue signals;
        const JobFolder folder;
        const SandboxState state = platform::sandboxHere();
        tellState(console, state);
        bool holds = true;
        platform::tryToBreakOut(folder.path(), signals.descriptor(), [&](const AttemptResult& result) {
            holds = holds && (result.isDenied || result.hasNoWall);
            tell(console, result);
        });
        holds = tellDrawing(console, settings, signals.descriptor()) && holds;
        tellEnd(console, holds, state);
        return holds ? 0 : static_cast<int>(platform::ErrorKind::Failed);
    }

  private:
    static void tellState(Console& console, const SandboxState& state) {
        if (console.isJson())
            return console.event(
                "fence", {{"level", state.word()},
                          {"missing", platform::Value::Array(state.missing.begin(), state.missing.end())}});
        console.line(std::string("fence: ") + state.word());
        for (const std::string& line : state.missing) console.line("  missing: " + line);
    }

    static void tell(Console& console, const AttemptResult& result) {
        if (console.isJson())
            return console.event("attempt", {{"name", result.name},
                                             {"denied", result.isDenied},
                                             {"noWall", result.hasNoWall},
                                             {"how", result.how}});
        console.line(std::string("  ") + result.name + ": " + wordOf(result) +
                     (result.how.empty() ? "" : " (" + printable(result.how) + ")"));
    }

    /// Drawing has to work behind the fence.
    static bool tellDrawing(Console& console, const JobSettings& settings, int signals) {
        std::string renderer, fault;
        platform::Worker worker([&](Channel& channel) {
            settings.limits.apply();
            platform::enterSandbox(platform::reachOfLibraries());
            try {
                const auto context = platform::GLContext::create();
                channel.send(Message::make(Message::Kind::Output, {context->caps().renderer}));
                channel.send(Message::make(Message::Kind::Done, {"0"}));
            } catch (const Error& error) {
                channel.send(Message::of(Message::Kind::Failure, error));
            }
            return 0;
        });
        platform::Supervisor supervisor(worker, settings.limits, signals,
                                        [&](Message& message) { renderer = message.field(0); });
        try {
            supervisor.run();
        } catch (const Error& error) {
            if (error.kind() == platform::ErrorKind::Cancelled) throw;
            fault = error.what();
        }
        if (console.isJson())
            console.event("drawing", {{"renderer", renderer}, {"fault", fault}});
        else
            console.line("drawing behind the fence: " + printable(fault.empty() ? renderer : fault));
        return fault.empty();
    }

    static void tellEnd(Console& console, bool holds, const SandboxState& state) {
        if (console.isJson()) return console.event("done", {{"holds", holds}});
        if (!holds)
            console.line("the fence does not hold");
        else if (state.level == SandboxState::Level::Full)
            console.line("the fence holds");
        else
            console.line("what this machine offers holds, but it does not offer everything");
    }
};

}  // namespace

std::unique_ptr<Command> makeSelftestCommand() { return std::make_unique<SelftestCommand>(); }

}  // namespace multiscene::cli
