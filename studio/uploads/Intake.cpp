#include "studio/uploads/Intake.h"

#include <algorithm>

#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Log.h"
#include "platform/base/PrivateFolder.h"
#include "studio/process/ChildProblem.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

namespace fs = std::filesystem;

namespace {

constexpr size_t kAtOnce = 2;
constexpr std::chrono::seconds kMost{120};
constexpr int kNiceness = 5;  // a page waits for it, but others draw
constexpr const char* kOwn = "own";
constexpr double kMostSeconds = 1e9;  // nothing lasts longer
constexpr int kPassing = static_cast<int>(platform::ErrorKind::Transient);

/// A name of a file in a folder, and of nothing else.
bool isPlainName(const std::string& name) {
    return !name.empty() && name.find('/') == std::string::npos && name.front() != '.' && name.size() < 64;
}

}  // namespace

Intake::Intake(const Parts& parts, Counters& counters)
    : parts_(parts), counters_(counters), disk_(std::make_unique<platform::DispatchQueue>("uploads")) {}

void Intake::take(const Upload& upload, const fs::path& folder, std::unique_ptr<platform::PartFile> file,
                  Done done) {
    waiting_.push_back({upload, folder, std::move(file), std::move(done), {}, {}});
    next();
}

void Intake::stop() {
    *isAlive_ = false;
    disk_.reset();
    waiting_.clear();
    for (auto& [id, work] : running_)
        if (work.child) work.child->cancel();
    running_.clear();
}

int64_t Intake::bytesOf(const std::string& session) const {
    int64_t bytes = 0;
    for (const Work& work : waiting_) bytes += work.upload.session == session ? work.upload.bytes : 0;
    for (const auto& [id, work] : running_) bytes += work.upload.session == session ? work.upload.bytes : 0;
    return bytes;
}

size_t Intake::countOf(const std::string& session) const {
    const auto isMine = [&](const Work& work) { return work.upload.session == session; };
    const auto isMineInHand = [&](const auto& each) { return isMine(each.second); };
    return static_cast<size_t>(std::ranges::count_if(waiting_, isMine) +
                               std::ranges::count_if(running_, isMineInHand));
}

void Intake::next() {
    while (!waiting_.empty() && running_.size() < kAtOnce) start(takeNext());
}

/// Of the session whose turn is the longest ago, the oldest.
Intake::Work Intake::takeNext() {
    const auto next = std::ranges::min_element(waiting_, {}, [this](const Work& work) {
        const auto turn = turns_.find(work.upload.session);
        return turn == turns_.end() ? 0 : turn->second;
    });
    Work work = std::move(*next);
    waiting_.erase(next);
    turns_[work.upload.session] = ++turn_;
    if (waiting_.empty()) turns_.clear();
    return work;
}

void Intake::start(Work work) {
    const std::string id = work.upload.id;
    const Work& kept = running_.emplace(id, std::move(work)).first->second;
    disk_->async([this, id, folder = kept.folder, file = kept.file, alive = isAlive_] {
        std::string fault;
        try {
            platform::makePrivateFolder(folder);
            platform::makePrivateFolder(folder / kOwn);
            file->publish();
            fs::rename(file->target(), folder / kOriginal);
        } catch (const std::exception& failure) {
            fault = failure.what();
        }
        parts_.queue.async([this, id, fault, alive] {
            if (!*alive) return;
            running_.at(id).file.reset();
            if (fault.empty()) return look(id);
            ChildProgram::End ended;
            ended.exitCode = kPassing;
            ended.fault = fault;
            platform::log::info("studio: an upload cannot be kept: " + fault);
            end(id, ended);
        });
    });
}

void Intake::look(const std::string& id) {
    Work& work = running_.at(id);
    ChildProgram::Spec spec = programRun(
        parts_.settings, {"intake", (work.folder / kOriginal).string(), (work.folder / kOwn).string()});
    spec.niceness = kNiceness;
    spec.most = kMost;
    spec.folder = work.folder;
    work.child = std::make_unique<ChildProgram>(
        parts_.queue, std::move(spec),
        [&work](const platform::Value& line) {
            if (line.string("event") == "intake") work.found = line;
        },
        [this, id](const ChildProgram::End& ended) { end(id, ended); });
}

void Intake::end(const std::string& id, const ChildProgram::End& ended) {
    const Work work = std::move(running_.extract(id).mapped());
    ++counters_.workerExits[{"intake", causeOf(ended)}];
    std::optional<Upload> upload;
    if (ended.exitCode == 0 && ended.fault.empty()) upload = judged(work);
    if (!upload) removeQuietly(work.folder);
    const bool neverRan = ended.exitCode < 0 && ended.signal == 0;
    work.done(upload, neverRan ? kPassing : ended.exitCode);
    next();
}

/// What the program says is believed as far as it is seen.
std::optional<Upload> Intake::judged(const Work& work) {
    Upload upload = work.upload;
    upload.kind = work.found.string("kind");
    if (upload.kind != "photo" && upload.kind != "video" && upload.kind != "sound") return std::nullopt;
    upload.file = kOriginal;
    if (const std::string name = work.found.string("file"); isPlainName(name)) {
        upload.file = std::string(kOwn) + "/" + name;
        if (!platform::isFile(work.folder / upload.file)) return std::nullopt;
        removeQuietly(work.folder / kOriginal);
    } else if (upload.kind == "photo") {
        return std::nullopt;  // one with all that a camera writes into it is not used
    }
    upload.width = work.found.integer("width");
    upload.height = work.found.integer("height");
    const double seconds = std::clamp(work.found["seconds"].doubleValue(), 0.0, kMostSeconds);
    upload.milliseconds = static_cast<int64_t>(seconds * 1000);
    upload.hasProxy = platform::isFile(work.folder / kProxy);
    return upload;
}

}  // namespace multiscene::studio
