#include "studio/uploads/Intake.h"

#include <algorithm>

#include "platform/base/File.h"
#include "platform/base/PrivateFolder.h"
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

void Intake::take(const Upload& upload, const fs::path& folder, Done done) {
    waiting_.push_back({upload, folder, std::move(done), {}, {}});
    next();
}

void Intake::stop() {
    waiting_.clear();
    for (auto& [id, work] : running_) work.child->cancel();
    running_.clear();
}

int64_t Intake::bytesOf(const std::string& session) const {
    int64_t bytes = 0;
    for (const Work& work : waiting_) bytes += work.upload.session == session ? work.upload.bytes : 0;
    for (const auto& [id, work] : running_) bytes += work.upload.session == session ? work.upload.bytes : 0;
    return bytes;
}

void Intake::next() {
    while (!waiting_.empty() && running_.size() < kAtOnce) {
        Work work = std::move(waiting_.front());
        waiting_.pop_front();
        try {
            platform::makePrivateFolder(work.folder / kOwn);
        } catch (const platform::Error&) {
            removeQuietly(work.folder);
            work.done(std::nullopt, kPassing);
            continue;
        }
        start(std::move(work));
    }
}

void Intake::start(Work work) {
    const std::string id = work.upload.id;
    ChildProgram::Spec spec = programRun(
        parts_.settings, {"intake", (work.folder / kOriginal).string(), (work.folder / kOwn).string()});
    spec.niceness = kNiceness;
    spec.most = kMost;
    spec.folder = work.folder;
    Work& kept = running_.emplace(id, std::move(work)).first->second;
    kept.child = std::make_unique<ChildProgram>(
        parts_.queue, std::move(spec),
        [&kept](const platform::Value& line) {
            if (line.string("event") == "intake") kept.found = line;
        },
        [this, id](const ChildProgram::End& ended) { end(id, ended); });
}

void Intake::end(const std::string& id, const ChildProgram::End& ended) {
    const Work work = std::move(running_.extract(id).mapped());
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
