#include "cli/FencedCommand.h"

#include <cstdlib>
#include <functional>

#include "app/job/JobFolder.h"
#include "cli/CatalogueCommand.h"
#include "cli/RelayedConsole.h"
#include "cli/SignalQueue.h"
#include "cli/SignalWatch.h"
#include "other/QVUtil.h"
#include "platform/base/Activity.h"
#include "platform/base/CurrentError.h"
#include "platform/base/Log.h"
#include "platform/base/Memory.h"
#include "platform/base/Paths.h"
#include "platform/fence/Sandbox.h"
#include "platform/fence/Supervisor.h"

namespace multiscene::cli {

namespace fs = std::filesystem;
using platform::Channel;
using platform::Error;
using platform::ErrorKind;
using platform::Message;
using platform::Reach;

namespace {

constexpr const char* kPublish = "publish";

/// Drivers keep the shaders that they have compiled. Those of workers stay among themselves: what a worker
/// that was taken over leaves there is used by none but workers.
fs::path shaderCache() {
    const char* const set = std::getenv("XDG_CACHE_HOME");
    const char* const home = std::getenv("HOME");
    if ((!set || !*set) && (!home || !*home)) return {};
    const fs::path folder =
        (set && *set ? fs::path(set) : fs::path(home) / ".cache") / "multiscene" / "shaders";
    std::error_code failure;
    fs::create_directories(folder, failure);
    return failure ? fs::path() : folder;
}

/// The program with its libraries, resources and samples; links lead to them in a build tree.
void addProgram(std::vector<fs::path>& paths) {
    std::error_code failure;
    const fs::path folder = fs::read_symlink("/proc/self/exe", failure).parent_path();
    paths.push_back(folder);
    paths.push_back(folder.parent_path() / "lib");
    const fs::path& resources = platform::resourcesFolder();
    paths.push_back(resources);
    paths.push_back(resources / "templates");
}

Reach wholeReach(const FencedCommand::Errand& errand, const fs::path& folder, const fs::path& cache) {
    Reach reach = platform::reachOfLibraries();
    addProgram(reach.read);
    reach.read.push_back(QVUtil::multiSceneRootPath());
    reach.write.push_back(QVUtil::dataPath());  // SQLite cannot read what others write without writing itself
    if (!folder.empty()) reach.write.push_back(folder);
    if (!cache.empty()) reach.write.push_back(cache);
    reach.add(errand.reach);
    return reach;
}

void tellFence(const platform::SandboxState& state, Channel& channel) {
    std::vector<std::string> fields{state.word()};
    for (const std::string& line : state.missing) fields.push_back(line);
    channel.send(Message::make(Message::Kind::Fence, std::move(fields)));
}

void tellActivity(Channel& channel) {
    platform::activity::setListener(
        [&channel](const std::string& stage, const std::string& file, ErrorKind blame) {
            constexpr size_t most = 4096;
            channel.send(Message::make(Message::Kind::Sign, {stage.substr(0, most), file.substr(0, most),
                                                             std::to_string(static_cast<int>(blame))}));
        });
}

/// In the worker: has the program publish, and waits for that.
void askToPublish(Channel& channel) {
    channel.send(Message::make(Message::Kind::Request, {kPublish}));
    const auto answer = channel.receive(true);
    if (!answer) throw Error(ErrorKind::Failed, "the program does not answer");
    if (!answer->fields.empty()) throw answer->error();
}

/// Temporary files of libraries go where the job may write, and away with it.
void setFolders(const fs::path& folder, const fs::path& cache) {
    if (!folder.empty()) ::setenv("TMPDIR", folder.c_str(), 1);
    if (cache.empty()) return;
    for (const char* name : {"MESA_SHADER_CACHE_DIR", "MESA_GLSL_CACHE_DIR", "__GL_SHADER_DISK_CACHE_PATH"})
        ::setenv(name, cache.c_str(), 0);
}

/// What a worker is shut in with.
struct Fence {
    const platform::WorkerLimits& limits;
    fs::path folder, cache;
    const FencedCommand::Errand& errand;
};

/// In the worker, before it has a second thread. Waits until the catalogue has been put right.
void shutIn(const Fence& fence, Channel& channel) {
    platform::leaveLastWordsToOthers();
    setFolders(fence.folder, fence.cache);
    fence.limits.apply();
    tellActivity(channel);
    if (fence.errand.usesCatalogue) channel.receive(true);
    tellFence(platform::enterSandbox(wholeReach(fence.errand, fence.folder, fence.cache)), channel);
    if (!fence.folder.empty()) JobFolder::nestIn(fence.folder);
    platform::activity::stage("reading what is asked for", ErrorKind::Template);
}

/// In the worker: does the work and tells what came of it; returns the exit code.
int tellEnd(Channel& channel, const std::function<int()>& work) {
    try {
        const int code = work();
        channel.send(Message::make(Message::Kind::Done, {std::to_string(code)}));
        return code;
    } catch (...) {
        const Error error = platform::currentError();
        channel.send(Message::of(Message::Kind::Failure, error));
        return error.exitCode();
    }
}

/// In the program: publishes when the worker asks for it, once.
class Answers {
  public:
    Answers(Channel& channel, std::function<void()> publish)
        : channel_(channel), publish_(std::move(publish)) {}
    void setOnPublished(std::function<void()> call) { onPublished_ = std::move(call); }

    void answer(const Message& request) {
        if (isAsked_ || request.field(0) != kPublish) return;
        isAsked_ = true;
        channel_.send(result());
    }

  private:
    Message result() {
        try {
            publish_();
            onPublished_();
            return Message::make(Message::Kind::Answer, {});
        } catch (...) {
            return Message::of(Message::Kind::Answer, platform::currentError());
        }
    }

    Channel& channel_;
    std::function<void()> publish_, onPublished_;
    bool isAsked_ = false;
};

void noteFence(const Message& message) {
    if (platform::isSanitized()) return;  // whoever builds with one knows
    for (size_t index = 1; index < message.fields.size(); ++index)
        std::fprintf(stderr, "multiscene: the fence is %s: %s\n", message.field(0).c_str(),
                     message.field(index).c_str());
}

}  // namespace

int FencedCommand::execute(Console& console, const JobSettings& settings) {
    // Before there is a folder that a signal could leave behind.
    if (!settings.isFenced) return runUnfenced(console);
    const SignalQueue signals;
    const auto job = jobFolder();
    const fs::path folder = job ? job->path() : fs::path();
    const Errand errand = prepare(folder);
    return runFenced(console, settings, signals.descriptor(), folder, errand);
}

std::unique_ptr<JobFolder> FencedCommand::jobFolder() const {
    return needsFolder() ? std::make_unique<JobFolder>() : nullptr;
}

int FencedCommand::runUnfenced(Console& console) {
    const SignalWatch signals;
    const auto job = jobFolder();
    prepare(job ? job->path() : fs::path());
    return work(console, signals.stopToken(), [this] { publish(); });
}

int FencedCommand::runFenced(Console& console, const JobSettings& settings, int signals,
                             const fs::path& folder, const Errand& errand) {
    const Fence fence{settings.limits, folder, shaderCache(), errand};
    platform::Worker worker([&](Channel& channel) {
        return tellEnd(channel, [&] {
            shutIn(fence, channel);
            const SignalWatch watch;
            RelayedConsole relayed(console.isJson(), channel);
            return work(relayed, watch.stopToken(), [&] { askToPublish(channel); });
        });
    });
    Answers answers(worker.channel(), [this] { publish(); });
    platform::Supervisor supervisor(worker, settings.limits, signals, [&](Message& message) {
        if (message.kind == Message::Kind::Request)
            answers.answer(message);
        else if (message.kind == Message::Kind::Fence)
            noteFence(message);
        else
            sayRelayed(console, message);
    });
    answers.setOnPublished([&] { supervisor.commit(); });
    supervisor.setSource(errand.source);
    if (errand.usesCatalogue) {
        openCatalogue();
        worker.channel().send(Message::make(Message::Kind::Answer, {}));
    }
    const int code = supervisor.run();
    platform::log::info("the job took at most " + std::to_string(supervisor.peakBytes() >> 20) + " MiB");
    return code;
}

}  // namespace multiscene::cli
