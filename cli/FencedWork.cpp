#include "cli/FencedWork.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "app/installation/TemplateInstallation.h"
#include "app/job/JobFolder.h"
#include "cli/CatalogueCommand.h"
#include "cli/RelayedConsole.h"
#include "other/QVUtil.h"
#include "platform/base/Activity.h"
#include "platform/base/CurrentError.h"
#include "platform/base/File.h"
#include "platform/base/Limits.h"
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
using platform::FileHandle;
using platform::Message;
using platform::Reach;

namespace {

/// The request for a copy of the catalogue; every other one is the command's affair.
constexpr const char* kCatalogue = "catalogue";
constexpr int kMostCopies = 100;
constexpr uint64_t kMostCatalogueBytes = platform::limitOf("maxCatalogueBytes");

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

Reach wholeReach(const Errand& errand, const fs::path& cache) {
    Reach reach = platform::reachOfLibraries();
    addProgram(reach.read);
    // Each of them may be a link to another disk.
    for (const std::string& folder : {QVUtil::multiSceneRootPath(), QVUtil::scenePath(), QVUtil::dataPath(),
                                      QVUtil::userResourcesPath(), QVUtil::templatePath()})
        (errand.change ? reach.write : reach.read).emplace_back(folder);
    if (!errand.folder.empty()) reach.write.push_back(errand.folder);
    if (!cache.empty()) reach.write.push_back(cache);
    reach.attributes = errand.change.has_value();
    reach.add(errand.reach);
    return reach;
}

void tellFence(const platform::SandboxState& state, Channel& channel) {
    std::vector<std::string> fields{state.word()};
    for (const std::string& line : state.missing) fields.push_back(line);
    channel.send(Message::make(Message::Kind::Fence, std::move(fields)));
}

/// What an archive holds is unpacked where no user knows it: "birthday.zip/birthday/scene.plist" says more.
std::string withUsersPaths(std::string text, const Errand& errand) {
    const std::string folder = errand.folder.string() + "/", source = errand.source + "/";
    constexpr size_t longest = 100;  // names of folders in the job's folder
    for (size_t at = 0; !errand.folder.empty() && (at = text.find(folder, at)) != std::string::npos;) {
        size_t end = std::string::npos;
        for (const std::string name : {"template/", "unpacked/"})
            if (const size_t found = text.find(name, at + folder.size());
                found < at + folder.size() + longest)
                end = std::min(end, found + name.size());
        if (end == std::string::npos) return text;
        text.replace(at, end - at, source);
        at += source.size();
    }
    return text;
}

void tellActivity(Channel& channel, const Errand& errand) {
    platform::activity::setListener([&](const std::string& stage, const std::string& file, ErrorKind blame) {
        constexpr size_t most = 4096;
        const std::string shown = withUsersPaths(file, errand);
        channel.send(Message::make(Message::Kind::Sign, {stage.substr(0, most), shown.substr(0, most),
                                                         std::to_string(static_cast<int>(blame))}));
    });
}

/// In the worker: asks the program and waits for its answer.
Message answered(Channel& channel, const std::vector<std::string>& request) {
    channel.send(Message::make(Message::Kind::Request, request));
    auto answer = channel.receive(true);
    if (!answer) throw Error(ErrorKind::Failed, "the program does not answer");
    if (!answer->fields.empty()) throw answer->error();
    return std::move(*answer);
}

/// Temporary files of libraries go where the job may write, and away with it.
void setFolders(const fs::path& folder, const fs::path& cache) {
    if (!folder.empty()) ::setenv("TMPDIR", folder.c_str(), 1);
    if (cache.empty()) return;
    for (const char* name : {"MESA_SHADER_CACHE_DIR", "MESA_GLSL_CACHE_DIR", "__GL_SHADER_DISK_CACHE_PATH"})
        ::setenv(name, cache.c_str(), 0);
}

/// In the worker, before it has a second thread.
void shutIn(const Errand& errand, const fs::path& cache, const platform::WorkerLimits& limits,
            Channel& channel) {
    platform::leaveLastWordsToOthers();
    setFolders(errand.folder, cache);
    limits.apply();
    tellActivity(channel, errand);
    tellFence(platform::enterSandbox(wholeReach(errand, cache)), channel);
    if (!errand.folder.empty()) JobFolder::nestIn(errand.folder);
    if (!errand.change)
        QVDataManager::readCopies([&channel] {
            const Message answer = answered(channel, {kCatalogue});
            if (answer.files.empty()) return std::string();
            const auto bytes = platform::readFile(answer.files.front(), kCatalogue, kMostCatalogueBytes);
            return std::string(bytes.begin(), bytes.end());
        });
    platform::activity::stage("reading what is asked for", ErrorKind::Template);
}

/// In the worker: does the work and tells what came of it; returns the exit code.
int tellEnd(Channel& channel, const Errand& errand, const std::function<int()>& work) {
    try {
        const int code = work();
        channel.send(Message::make(Message::Kind::Done, {std::to_string(code)}));
        return code;
    } catch (...) {
        const Error error = platform::currentError();
        const Error shown(error.kind(), withUsersPaths(error.message(), errand),
                          withUsersPaths(error.file(), errand), error.key());
        channel.send(Message::of(Message::Kind::Failure, shown));
        return error.exitCode();
    }
}

FileHandle copyOf(int descriptor) {
    FileHandle copy(descriptor < 0 ? -1 : ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0));
    if (descriptor >= 0 && !copy) throw platform::errnoError(errno, "cannot hand a connection over", "");
    return copy;
}

void handConnectionOver(const Errand& errand, Channel& worker) {
    if (errand.connection < 0) return;
    Message message = Message::make(Message::Kind::Answer, {});
    message.files.push_back(copyOf(errand.connection));
    worker.send(message);
}

/// In the worker, before it asks for anything else.
FileHandle receivedConnection(const Errand& errand, Channel& program) {
    if (errand.connection < 0) return {};
    auto message = program.receive(true);
    if (!message || message->files.empty()) throw Error(ErrorKind::Failed, "the program does not answer");
    return std::move(message->files.front());
}

void noteFence(const Message& message) {
    if (platform::isSanitized()) return;  // whoever builds with one knows
    for (size_t index = 1; index < message.fields.size(); ++index)
        std::fprintf(stderr, "multiscene: the fence is %s: %s\n", message.field(0).c_str(),
                     message.field(index).c_str());
}

/// What killed installations left, for those that only read the catalogue. One that cannot be read is told by
/// who needs it.
void putCatalogueRight() {
    try {
        if (platform::isThere(QVDataManager::databasePath())) openCatalogue();
    } catch (const Error& failure) {
        platform::log::info(failure.what());
    }
}

/// A transfer may take as long as a download may, on top of what any job may take.
platform::WorkerLimits limitsOf(const Errand& errand, platform::WorkerLimits limits) {
    if (errand.reach.network) limits.firstSeconds += platform::limitOf("maxDownloadSeconds");
    return limits;
}

/// A file in memory that holds these bytes.
FileHandle fileHolding(const std::string& bytes) {
    FileHandle file(::memfd_create("multiscene", MFD_CLOEXEC));
    for (size_t written = 0; file && written < bytes.size();) {
        const ssize_t count = ::write(file.descriptor(), bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno != EINTR) file.reset();
        if (count > 0) written += static_cast<size_t>(count);
    }
    if (!file) throw platform::errnoError(errno, "cannot hand the catalogue over", "");
    return file;
}

}  // namespace

FencedWork::FencedWork(Console& console, const JobSettings& settings)
    : console_(console), settings_(settings) {
    if (settings.isFenced)
        signals_ = std::make_unique<SignalQueue>();
    else
        watch_ = std::make_unique<SignalWatch>();
}

int FencedWork::run(const Errand& errand, const Work& work, const Answer& answer) {
    if (!settings_.isFenced) return runHere(errand, work, answer);
    try {
        return runFenced(errand, limitsOf(errand, settings_.limits), work, answer);
    } catch (...) {
        if (!errand.change) throw;
        const bool hasDied = hasDied_, hasWritten = hasWritten_;
        const std::optional<bool> isMade = recoverCatalogue(*errand.change);
        if (!hasDied || isMade == false) throw;
        if (!isMade) throw unsettled(platform::currentError());
        if (!hasWritten) errand.change->tell(console_);
        return 0;
    }
}

/// What a worker has left that was killed while it changed the catalogue. A disk that holds this one up too
/// leaves it to the next start.
std::optional<bool> FencedWork::recoverCatalogue(const CatalogueChange& change) {
    enum { Made, NotMade, NotSettled };
    const bool stands = isCommitted_;
    constexpr uint64_t mostSeconds = 1;
    platform::WorkerLimits limits = settings_.limits;
    limits.wallSeconds = limits.stepSeconds = mostSeconds;
    Errand errand;
    errand.change = change;
    int found = NotSettled;
    try {
        const auto work = [&change](Workplace&) -> int {
            const std::optional<bool> isMade = change.isMade(*openCatalogue());
            return !isMade ? NotSettled : *isMade ? Made : NotMade;
        };
        found = runFenced(errand, limits, work, {});
    } catch (const Error& failure) {
        platform::log::info(std::string("the catalogue is not put right: ") + failure.what());
    }
    isCommitted_ = stands;
    return found == NotSettled ? std::nullopt : std::optional(found == Made);
}

bool FencedWork::isCancelled() const {
    if (watch_) return watch_->stopToken().stop_requested();
    pollfd signals{signals_->descriptor(), POLLIN, 0};
    return ::poll(&signals, 1, 0) > 0;
}

int FencedWork::runHere(const Errand& errand, const Work& work, const Answer& answer) {
    if (!errand.change) putCatalogueRight();
    Workplace place{console_, watch_->stopToken(), answer, copyOf(errand.connection)};
    return work(place);
}

int FencedWork::runFenced(const Errand& errand, const platform::WorkerLimits& limits, const Work& work,
                          const Answer& answer) {
    isCommitted_ = hasDied_ = hasWritten_ = false;
    copies_ = 0;
    const fs::path cache = shaderCache();
    if (errand.change) QVUtil::createMultiSceneLocalPaths();  // only what exists can be reached
    catalogue_.reset();  // SQLite's own memory of open files and locks must not be there twice
    platform::Worker worker([&](Channel& channel) {
        return tellEnd(channel, errand, [&] {
            shutIn(errand, cache, limits, channel);
            FileHandle connection = receivedConnection(errand, channel);
            const SignalWatch watch;
            RelayedConsole relayed(console_.isJson(), channel, [&errand](const std::string& text) {
                return withUsersPaths(text, errand);
            });
            Workplace place{relayed, watch.stopToken(),
                            [&](const std::vector<std::string>& request) { answered(channel, request); },
                            std::move(connection)};
            return work(place);
        });
    });
    handConnectionOver(errand, worker.channel());
    std::function<void()> commit;
    platform::Supervisor supervisor(worker, limits, signals_->descriptor(), [&](Message& message) {
        if (message.kind == Message::Kind::Request) {
            // One that asks without listening gets no answer.
            worker.channel().sendAtOnce(answerTo(message, answer));
            if (isCommitted_) commit();
        } else if (message.kind == Message::Kind::Fence) {
            noteFence(message);
        } else {
            hasWritten_ = hasWritten_ || message.kind == Message::Kind::Output;
            sayRelayed(console_, message);
        }
    });
    commit = [&supervisor] { supervisor.commit(); };
    supervisor.setSource(errand.source);
    int code = 0;
    try {
        code = supervisor.run();
    } catch (...) {
        hasDied_ = !supervisor.hasOutcome();
        throw;
    }
    platform::log::info("the job took at most " + std::to_string(supervisor.peakBytes() >> 20) + " MiB");
    return code;
}

Message FencedWork::answerTo(const Message& request, const Answer& answer) {
    try {
        Message answered = Message::make(Message::Kind::Answer, {});
        if (request.field(0) != kCatalogue) {
            if (answer) answer(request.fields);
        } else if (const std::string copy = copyOfCatalogue(); !copy.empty()) {
            answered.files.push_back(fileHolding(copy));
        }
        return answered;
    } catch (...) {
        return Message::of(Message::Kind::Answer, platform::currentError());
    }
}

/// What killed installations left is put right first. A catalogue that is not there is not made.
std::string FencedWork::copyOfCatalogue() {
    if (!platform::isThere(QVDataManager::databasePath())) return {};
    if (++copies_ > kMostCopies) throw Error(ErrorKind::Failed, "the catalogue is asked for too often");
    if (!catalogue_) catalogue_ = openCatalogue();
    return catalogue_->image();
}

}  // namespace multiscene::cli
