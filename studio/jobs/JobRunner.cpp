#include "studio/jobs/JobRunner.h"

#include <algorithm>

#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "platform/base/PrivateFolder.h"
#include "studio/process/ChildProblem.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::Value;

namespace {

constexpr int kNiceness = 10;  // pages and previews come first
/// Beside much else a run gets to its own end slowly, and somebody waits. What it leaves, the next one
/// removes.
constexpr std::chrono::milliseconds kPatience{150};
constexpr const char* kPictures = "pictures";

/// Where a run is, by what it says.
const char* stageOf(int64_t frame, int64_t total) {
    if (frame <= 0) return "preparing";
    return total > 0 && frame >= total ? "mixing" : "rendering";
}

bool takeProgress(const Value& line, Progress& progress) {
    progress.frame = std::max<int64_t>(line.integer("frame"), 0);
    progress.total = std::max<int64_t>(line.integer("total"), 0);
    progress.stage = stageOf(progress.frame, progress.total);
    progress.secondsRemaining.reset();
    if (line.has("secondsRemaining")) progress.secondsRemaining = line["secondsRemaining"].doubleValue();
    return true;
}

/// A download in hundredths of all.
bool takeDownload(const Value& line, Progress& progress) {
    const double total = line["totalBytes"].doubleValue();
    progress.stage = "preparing";
    progress.total = total > 0 ? 100 : 0;
    progress.frame = total > 0 ? static_cast<int64_t>(100 * line["bytes"].doubleValue() / total) : 0;
    progress.secondsRemaining.reset();
    if (line.has("secondsRemaining")) progress.secondsRemaining = line["secondsRemaining"].doubleValue();
    return true;
}

struct OptionRow {
    const char *option, *pointer;
};
constexpr OptionRow kOptions[] = {
    {"--music", "/music"},
    {"--music-start", "/music/start"},
    {"--music-volume", "/music/volume"},
    {"--size", "/size"},
};

std::string pointerTo(const std::string& key) {
    for (const OptionRow& row : kOptions)
        if (key == row.option) return row.pointer;
    return key.starts_with('-') ? "" : "/values/" + key;
}

/// In the words of what was asked for: who asked knows no options, and a wrong one is a wrong wish.
Problem jobProblem(const ChildProgram::End& end) {
    const Error error = errorOf(end);
    Problem problem(error.kind() == ErrorKind::Usage ? error.withKind(ErrorKind::Input) : error);
    for (ProblemEntry& entry : problem.errors) {
        entry.pointer = pointerTo(entry.key);
        if (entry.key.starts_with('-')) entry.key.clear();
    }
    return problem;
}

bool isInterrupted(const ChildProgram::End& end) {
    const bool neverRan = end.exitCode < 0 && end.signal == 0;
    if (!end.fault.empty()) return neverRan;
    return end.exitCode < 0 || end.exitCode == static_cast<int>(ErrorKind::Transient) ||
           end.exitCode == static_cast<int>(ErrorKind::Cancelled);
}

}  // namespace

JobRunner::JobRunner(platform::DispatchQueue& queue, const StudioSettings& settings, fs::path folder,
                     Listener listener)
    : queue_(queue), settings_(settings), folder_(std::move(folder)), listener_(std::move(listener)) {}

JobRunner::~JobRunner() { stop(); }

/// A new one, whatever an earlier attempt has left.
fs::path JobRunner::makeFolder(const Job& job) const {
    const fs::path folder = folder_ / (job.id + "." + std::to_string(job.attempt));
    removeQuietly(folder);
    platform::makePrivateFolder(folder);
    platform::createFolders(folder / kPictures);
    return folder;
}

void JobRunner::make(const Job& job, std::vector<std::string> words, const Value& media) {
    const fs::path folder = makeFolder(job), inputs = folder / "inputs.json";
    platform::writeFileAtomically(inputs, platform::jsonText(media));
    words.insert(words.end(), {"--media", inputs.string(), "--pictures", (folder / kPictures).string(), "-o",
                               (folder / kVideo).string()});
    start(job, std::move(words), folder);
}

void JobRunner::changeCatalogue(const Job& job) {
    std::vector<std::string> words{"templates", "update"};
    if (job.kind == JobKind::Install)
        words = {"templates", "install", std::to_string(job.templateId), "--replace"};
    start(job, std::move(words), makeFolder(job));
}

void JobRunner::start(const Job& job, std::vector<std::string> words, fs::path folder) {
    Run& run = runs_[job.id];
    run.isDrawn = isDrawn(job.kind);
    run.progress.stage = "preparing";
    run.progress.total = job.total;
    run.folder = std::move(folder);
    ChildProgram::Spec spec = programRun(settings_, std::move(words));
    spec.folder = run.folder;
    spec.niceness = kNiceness;
    if (run.isDrawn) spec.patience = kPatience;
    run.child = std::make_unique<ChildProgram>(
        queue_, std::move(spec), [this, id = job.id](const Value& line) { hear(id, line); },
        [this, id = job.id](const ChildProgram::End& ended) { end(id, ended); });
}

void JobRunner::hear(const std::string& id, const Value& line) {
    Run& run = runs_.at(id);
    const std::string event = line.string("event");
    if (event == "done") {
        run.summary = line;
        run.progress.stage = "publishing";
    } else if (!(event == "progress" && takeProgress(line, run.progress)) &&
               !(event == "download" && takeDownload(line, run.progress))) {
        return;
    }
    listener_.progressed(id, run.progress);
}

void JobRunner::end(const std::string& id, const ChildProgram::End& ended) {
    const Run run = std::move(runs_.extract(id).mapped());
    RunEnd end;
    end.folder = run.folder;
    end.summary = run.summary;
    end.cause = causeOf(ended);
    if (ended.exitCode == 0 && ended.fault.empty())
        end.kind = RunEnd::Kind::Done;
    else if (run.isCancelled)
        end.kind = RunEnd::Kind::Cancelled;
    else if (isInterrupted(ended))
        end.kind = RunEnd::Kind::Interrupted;
    if (end.kind != RunEnd::Kind::Done) end.problem = jobProblem(ended).value();
    listener_.ended(id, end);
    removeQuietly(run.folder);
}

void JobRunner::cancel(const std::string& id) {
    const auto found = runs_.find(id);
    if (found == runs_.end()) return;
    found->second.isCancelled = true;
    found->second.child->cancel();
}

void JobRunner::stop() {
    for (auto& [id, run] : runs_) run.child->cancel();
    // Each is waited for as it goes, and what it has left goes after it.
    for (auto& [id, run] : runs_) {
        run.child.reset();
        removeQuietly(run.folder);
    }
    runs_.clear();
}

std::size_t JobRunner::running(bool areDrawn) const {
    return static_cast<std::size_t>(std::count_if(
        runs_.begin(), runs_.end(), [&](const auto& run) { return run.second.isDrawn == areDrawn; }));
}

fs::path JobRunner::pictureOf(const std::string& id) const {
    const auto found = runs_.find(id);
    return found == runs_.end() ? fs::path() : found->second.folder / kPicture;
}

}  // namespace multiscene::studio
