#include "studio/previews/PreviewPool.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <thread>

#include "studio/store/Names.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kLook{30};
constexpr std::chrono::milliseconds kStartNext{1500};  // not while the one that was taken opens
constexpr size_t kMostMoments = 1000;

}  // namespace

PreviewPool::PreviewPool(const Parts& parts, UploadStore& uploads, Counters& counters)
    : parts_(parts),
      uploads_(uploads),
      counters_(counters),
      mostPrograms_(std::max(1U, std::thread::hardware_concurrency()) + 1) {
    counters_.previews = [this] { return sessions_.size(); };
    counters_.previewWorkers = [this] { return programs(); };
    // What an earlier run has left.
    std::error_code failure;
    for (const auto& entry : fs::directory_iterator(parts.folders.cache, failure))
        if (isName(entry.path().filename().string(), "prv")) removeQuietly(entry.path());
    watch();
}

PreviewPool::~PreviewPool() {
    *isAlive_ = false;
    counters_.previews = counters_.previewWorkers = [] { return 0; };
}

void PreviewPool::watch() {
    parts_.timers.after(std::min(kLook, idle()), [this, alive = isAlive_] {
        if (!*alive) return;
        removeIdle();
        watch();
    });
}

std::string PreviewPool::versionOf(const TemplateFacts& facts) {
    std::error_code failure;
    const auto changed = fs::last_write_time(facts.folder, failure).time_since_epoch().count();
    return std::to_string(facts.id) + " " + facts.folder + " " + std::to_string(failure ? 0 : changed);
}

PreviewSession& PreviewPool::add(const std::string& session, const TemplateFacts& facts, int64_t width) {
    if (sessions_.size() >= parts_.settings.limits.previews)
        remove(leastUsed([](const auto&) { return true; }));
    makeRoomForProgram(nullptr);
    const std::string version = versionOf(facts), id = newName("prv");
    PreviewSession::Opening opening{id, session, facts, width, parts_.folders.cache / id, std::nullopt};
    if (const auto known = moments_.find(version); known != moments_.end()) opening.moments = known->second;
    auto made = std::make_unique<PreviewSession>(parts_, std::move(opening), uploads_, counters_);
    made->setMakeProgram([this] { return takeProgram(); });
    made->setOnMoments([this, version](const PreviewSession::Moments& moments) {
        if (moments_.size() >= kMostMoments) moments_.clear();
        moments_[version] = moments;
    });
    return *sessions_.emplace(id, std::move(made)).first->second;
}

const PreviewSession* PreviewPool::find(const std::string& id, const std::string& session) const {
    const auto found = sessions_.find(id);
    return found != sessions_.end() && found->second->session() == session ? found->second.get() : nullptr;
}

PreviewSession* PreviewPool::use(const std::string& id, const std::string& session) {
    if (!find(id, session)) return nullptr;
    PreviewSession& used = *sessions_.at(id);
    if (!used.hasProgram()) makeRoomForProgram(&used);
    return &used;
}

void PreviewPool::remove(const std::string& id) {
    if (const auto found = sessions_.find(id); found != sessions_.end()) remove(found);
}

void PreviewPool::remove(Sessions::iterator session) {
    letGo(session->second->dropProgram());
    sessions_.erase(session);
    if (sessions_.empty()) letGo(std::move(ahead_));
}

/// Starting a program takes a tenth of a second on a busy machine.
std::unique_ptr<HeldProgram> PreviewPool::takeProgram() {
    std::unique_ptr<HeldProgram> taken = std::move(ahead_);
    if (!taken || taken->hasEnded()) taken = std::make_unique<HeldProgram>(parts_);
    parts_.timers.after(kStartNext, [this, alive = isAlive_] {
        if (*alive && !sessions_.empty()) startAhead();
    });
    return taken;
}

void PreviewPool::startAhead() {
    if (isStopped_ || (ahead_ && !ahead_->hasEnded())) return;
    aheadSince_ = PreviewSession::Clock::now();
    try {
        ahead_ = std::make_unique<HeldProgram>(parts_);
    } catch (const std::exception&) {
        // Whoever needs one starts it.
    }
}

void PreviewPool::letGo(std::unique_ptr<HeldProgram> program) {
    if (!program || program->hasEnded()) return;  // nobody would say that it has gone
    HeldProgram* const leaving = program.get();
    leaving_.emplace(leaving, std::move(program));
    leaving->leave([this, leaving] { leaving_.erase(leaving); });
}

void PreviewPool::stop() {
    isStopped_ = true;
    while (!sessions_.empty()) remove(sessions_.begin());
    ahead_.reset();
    leaving_.clear();
}

size_t PreviewPool::programs() const {
    return static_cast<size_t>(
        std::ranges::count_if(sessions_, [](const auto& each) { return each.second->hasProgram(); }));
}

PreviewPool::Sessions::iterator PreviewPool::leastUsed(
    const std::function<bool(const PreviewSession&)>& counts) {
    auto least = sessions_.end();
    for (auto each = sessions_.begin(); each != sessions_.end(); ++each)
        if (counts(*each->second) &&
            (least == sessions_.end() || each->second->usedAt() < least->second->usedAt()))
            least = each;
    return least;
}

/// Nobody waits for those that are not busy.
void PreviewPool::makeRoomForProgram(const PreviewSession* except) {
    while (programs() >= mostPrograms_) {
        const auto isHeld = [&](const PreviewSession& each) { return each.hasProgram() && &each != except; };
        auto least = leastUsed([&](const PreviewSession& each) { return isHeld(each) && !each.isBusy(); });
        if (least == sessions_.end()) least = leastUsed(isHeld);
        if (least == sessions_.end()) return;
        letGo(least->second->dropProgram());
    }
}

void PreviewPool::removeIdle() {
    const auto before = PreviewSession::Clock::now() - idle();
    if (sessions_.empty() && aheadSince_ < before) letGo(std::move(ahead_));
    for (auto each = sessions_.begin(); each != sessions_.end();) {
        const auto next = std::next(each);
        if (each->second->usedAt() < before) remove(each);
        each = next;
    }
}

}  // namespace multiscene::studio
