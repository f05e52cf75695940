#include "studio/jobs/JobQueue.h"

#include <fcntl.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "app/job/JobFolder.h"
#include "platform/base/File.h"
#include "platform/base/Log.h"
#include "platform/base/Paths.h"
#include "studio/api/Problem.h"
#include "studio/jobs/CostEstimate.h"
#include "studio/jobs/JobRequest.h"
#include "studio/store/Names.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

constexpr int64_t kSecond = 1000, kDay = 24 * 3600 * kSecond;
constexpr int64_t kDraftStays = 3600 * kSecond;
constexpr int64_t kTellEvery = 250;   ///< milliseconds between two events of progress
constexpr milliseconds kPause{2000};  ///< before what may pass is tried again
constexpr seconds kExpiryEvery{60}, kNextTry{5}, kOrphanAge{3600};

std::size_t workersOf(const StudioSettings& settings) {
    const unsigned half = std::thread::hardware_concurrency() / 2;
    return settings.workers > 0 ? static_cast<std::size_t>(settings.workers) : std::max(1U, half);
}

/// A name is there after a power failure too.
void flushFolder(const fs::path& folder) {
    const platform::FileHandle opened = platform::openFile(folder, O_RDONLY | O_DIRECTORY);
    if (opened) platform::flushToDisk(opened, folder.string());
}

void moveTo(const fs::path& from, const fs::path& to) {
    std::error_code failure;
    fs::rename(from, to, failure);
    if (failure) throw platform::errnoError(failure.value(), "cannot be moved", from.string());
}

Problem interruptedProblem(const Value& last, int attempts) {
    const std::string why = last.string("detail");
    return {500, "interrupted",
            "the job was interrupted " + std::to_string(attempts) + " times" +
                (why.empty() ? "" : "; the last time: " + why)};
}

}  // namespace

JobQueue::JobQueue(const Parts& parts, const Stores& stores, EventHub& events, Counters& counters,
                   FindTemplate findTemplate)
    : parts_(parts),
      stores_(stores),
      events_(events),
      counters_(counters),
      findTemplate_(std::move(findTemplate)),
      runner_(parts.queue, parts.settings, parts.folders.jobs,
              {[this](const std::string& id, const Progress& progress) { hear(id, progress); },
               [this](const std::string& id, const RunEnd& ended) { end(id, ended); }}),
      workers_(workersOf(parts.settings)) {}

/// What goes wrong outside of a request, as a full disk does, is tried again with the next thing that
/// happens.
void JobQueue::guarded(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& failure) {
        platform::log::info(std::string("studio: ") + failure.what());
        isShaken_ = true;
        parts_.timers.after(kNextTry, [this] { next(); });
    }
}

// --- the start and the end of the studio ----------------------------------------------------------------

void JobQueue::recover() {
    for (const Job& job : stores_.jobs.unended()) recover(job);
    removeUnknown(parts_.folders.jobs, [](const std::string&) { return false; });
    stores_.uploads.sweep(seconds(0));
    stores_.videos.sweep(seconds(0));
    removeLeft();
    removeExpired();
    next();
}

/// What killed runs have left elsewhere goes with the next one's beginning; there may be none.
void JobQueue::removeLeft() const {
    if (platform::dataHome() == parts_.settings.home) const JobFolder sweeping;
}

void JobQueue::recover(const Job& job) {
    if (job.state == JobState::Cancelling)
        finish(job, JobState::Cancelled, {}, {});
    else if (job.state == JobState::Running && job.deaths >= kMostDeaths)
        finish(job, JobState::Failed,
               Problem(500, "interrupted", "the studio was ended again and again while it made this").value(),
               {});
    else if (job.state == JobState::Running)
        stores_.jobs.putBackUncounted(job.id, true);
}

void JobQueue::stop() {
    if (isStopped_) return;
    isStopped_ = true;
    guarded([this] {
        for (const Job& job : stores_.jobs.unended()) {
            if (job.state == JobState::Running) stores_.jobs.putBackUncounted(job.id, false);
            if (job.state == JobState::Cancelling) stores_.jobs.end(job.id, JobState::Cancelled, {}, nowMs());
        }
    });
    runner_.stop();
}

// --- asking ---------------------------------------------------------------------------------------------

Job JobQueue::submit(Job job, const std::vector<std::string>& uploads) {
    requireRoom(job);
    job.id = newName("job");
    job.created = nowMs();
    stores_.jobs.add(job, uploads);
    parts_.queue.async([this] { next(); });
    return job;
}

void JobQueue::requireRoom(const Job& job) {
    if (isDrawn(job.kind) && job.cost > static_cast<int64_t>(parts_.settings.limits.jobSeconds) * kSecond)
        throw Problem(422, "too-long",
                      "this would take about " + std::to_string(job.cost / kSecond / 60) + " minutes");
    const JobStore::Counts waiting = stores_.jobs.countWaiting(job.session);
    const StudioLimits& limits = parts_.settings.limits;
    if (waiting.ofAll < static_cast<int64_t>(limits.jobs) &&
        waiting.ofSession < static_cast<int64_t>(limits.jobsOfSession))
        return;
    Problem full(429, "queue-full", "too many jobs wait already");
    full.retryAfter = 30;
    throw full;
}

bool JobQueue::cancel(const Job& job) {
    if (stores_.jobs.cancelWaiting(job.id, nowMs())) {
        stores_.uploads.release(job.id, nowMs() + parts_.settings.photosStay.count() * kSecond);
        ended(job.id, {});
        tellPlaces();
        return true;
    }
    if (!stores_.jobs.askToCancel(job.id)) return job.state == JobState::Cancelling;
    runner_.cancel(job.id);
    if (const auto now = stores_.jobs.find(job.id)) tell(*now);
    return true;
}

int64_t JobQueue::estimate(int64_t templateId, int64_t frames, int64_t pixels) {
    return CostEstimate::milliseconds(frames, pixels, stores_.jobs.measuredCost(templateId));
}

// --- turns ----------------------------------------------------------------------------------------------

void JobQueue::next() {
    if (isStopped_) return;
    guarded([this] {
        if (std::exchange(isShaken_, false)) putBackLost();
        while (runner_.running(true) < workers_ && startNext(true)) {
        }
        // One at a time: each changes the catalogue.
        if (runner_.running(false) == 0) startNext(false);
        tellPlaces();
        wakeWhenDue();
    });
}

/// Some wait for a time, which a studio that was started anew knows from the disk alone.
void JobQueue::wakeWhenDue() {
    const int64_t now = nowMs();
    const auto due = stores_.jobs.nextDue(now);
    if (!due || (wakesAt_ > now && wakesAt_ <= *due)) return;
    wakesAt_ = *due;
    parts_.timers.after(milliseconds(*due - now + 1), [this] {
        wakesAt_ = 0;  // the clock may have been set back meanwhile
        next();
    });
}

/// Jobs whose end could not be written down.
void JobQueue::putBackLost() {
    for (const Job& job : stores_.jobs.unended()) {
        if (job.state == JobState::Queued || runner_.isRunning(job.id)) continue;
        if (job.state == JobState::Cancelling)
            finish(job, JobState::Cancelled, {}, {});
        else
            interrupted(job, {});
    }
}

bool JobQueue::startNext(bool areDrawn) {
    const auto job = stores_.jobs.claim(areDrawn, nowMs());
    if (job) start(*job);
    return job.has_value();
}

void JobQueue::start(const Job& job) {
    progress_[job.id] = {.stage = "preparing", .frame = 0, .total = job.total, .secondsRemaining = {}};
    stageSince_[job.id] = nowMs();
    try {
        if (!isDrawn(job.kind)) {
            runner_.changeCatalogue(job);
        } else if (const auto facts = findTemplate_(job.templateId, "en")) {
            runner_.make(job, request::wordsOf(job, *facts, stores_.uploads),
                         request::mediaOf(job.request["values"], stores_.uploads, job.session));
        } else {
            return finish(job, JobState::Failed,
                          Problem(422, "template-gone", "the template is not there any more").value(), {});
        }
        tell(job);
    } catch (const platform::Error& error) {
        // Where the studio itself has no room or does not know its templates yet, the job is not to blame.
        if (error.kind() != platform::ErrorKind::Transient) return interrupted(job, Problem(error).value());
        progress_.erase(job.id);
        stores_.jobs.putBackUncounted(job.id, false, nowMs() + kPause.count());
    }
}

void JobQueue::hear(const std::string& id, const Progress& progress) {
    Progress& known = progress_[id];
    const bool isNewStage = known.stage != progress.stage;
    if (isNewStage) countStage(id, true);
    known = progress;
    const int64_t now = nowMs();
    if (!isNewStage && now - toldAt_[id] < kTellEvery) return;
    toldAt_[id] = now;
    guarded([&] {
        if (const auto job = stores_.jobs.find(id)) tell(*job);
    });
}

/// Before the job enters another stage, or none.
void JobQueue::countStage(const std::string& id, bool goesOn) {
    const auto since = stageSince_.find(id);
    const auto progress = progress_.find(id);
    if (since == stageSince_.end() || progress == progress_.end()) return;
    const int64_t now = nowMs();
    counters_.stageSeconds[progress->second.stage] += static_cast<double>(now - since->second) / kSecond;
    since->second = now;
    if (!goesOn) stageSince_.erase(since);
}

// --- the end --------------------------------------------------------------------------------------------

void JobQueue::end(const std::string& id, const RunEnd& end) {
    countStage(id, false);
    ++counters_.workerExits[{"job", end.cause}];
    guarded([&] {
        const auto job = stores_.jobs.find(id);
        if (!job) return;
        if (job->state == JobState::Cancelling)
            finish(*job, JobState::Cancelled, {}, {});
        else if (end.kind == RunEnd::Kind::Done)
            complete(*job, end);
        else if (end.kind == RunEnd::Kind::Failed)
            finish(*job, JobState::Failed, end.problem, {});
        else
            interrupted(*job, end.problem);
        // What it has begun ends a moment after it, and holds its folder until then.
        if (end.cause == "signal") parts_.timers.after(seconds(1), [this] { removeLeft(); });
    });
    next();
}

/// The file has its place before the row says so; what a studio leaves that is killed in between is removed
/// at the next start.
void JobQueue::complete(const Job& job, const RunEnd& end) {
    if (!isDrawn(job.kind)) return finish(job, JobState::Done, {}, end.summary);
    const int64_t now = nowMs();
    Video video;
    video.id = newName("vid");
    video.job = job.id;
    video.session = job.session;
    video.title = job.title;
    video.templateId = job.templateId;
    video.templateTitle = job.templateTitle;
    video.width = end.summary.integer("width");
    video.height = end.summary.integer("height");
    video.frames = end.summary.integer("frames");
    video.seconds = end.summary["videoSeconds"].doubleValue();
    video.hasSound = end.summary.has("sound");
    video.created = now;
    const bool isDraft = job.kind == JobKind::Draft;
    video.expires = now + (isDraft ? kDraftStays : parts_.settings.videosStayDays * kDay);
    std::error_code failure;
    video.bytes = static_cast<int64_t>(fs::file_size(end.folder / JobRunner::kVideo, failure));
    moveTo(end.folder / JobRunner::kVideo, stores_.videos.fileOf(video.id));
    fs::rename(end.folder / JobRunner::kPoster, stores_.videos.posterOf(video.id), failure);
    flushFolder(stores_.videos.fileOf(video.id).parent_path());
    parts_.database.transaction([&] {
        stores_.videos.add(video);
        finish(job, JobState::Done, {}, end.summary);
    });
    if (!isDraft) events_.tell({job.session, job.id}, "video", valueOf(video));
}

void JobQueue::interrupted(const Job& job, const Value& problem) {
    if (job.attempt >= static_cast<int>(parts_.settings.limits.jobAttempts))
        return finish(job, JobState::Failed, interruptedProblem(problem, job.attempt).value(), {});
    const milliseconds pause = seconds(1 << job.attempt);
    stores_.jobs.putBack(job.id, nowMs() + pause.count());
    progress_.erase(job.id);
    if (const auto now = stores_.jobs.find(job.id)) tell(*now);
}

void JobQueue::finish(const Job& job, JobState state, const Value& problem, const Value& summary) {
    const int64_t now = nowMs();
    bool isEnded = false;
    parts_.database.transaction([&] {
        isEnded = stores_.jobs.end(job.id, state, problem, now);
        stores_.uploads.release(job.id, now + parts_.settings.photosStay.count() * kSecond);
        if (isEnded && state == JobState::Done && isDrawn(job.kind))
            stores_.jobs.measure(job.templateId, CostEstimate::picoseconds(
                                                     summary.integer("frames"),
                                                     summary.integer("width") * summary.integer("height"),
                                                     summary["seconds"].doubleValue()));
    });
    if (isEnded) parts_.queue.async([this, id = job.id, summary] { ended(id, summary); });
}

void JobQueue::ended(const std::string& id, const Value& summary) {
    progress_.erase(id);
    toldAt_.erase(id);
    guarded([&] {
        const auto job = stores_.jobs.find(id);
        if (!job || !hasEnded(job->state)) return;
        tell(*job);
        if (job->kind == JobKind::Install && job->state == JobState::Done)
            events_.tell({job->session, job->id}, "template", Value::Dictionary{{"id", job->templateId}});
        for (const auto& listener : listeners_) listener(*job, summary);
        if (parts_.settings.photosStay.count() == 0) stores_.uploads.removeExpired(nowMs());
    });
}

// --- telling --------------------------------------------------------------------------------------------

Value JobQueue::show(const Job& job) {
    const auto progress = progress_.find(job.id);
    return valueOf(job, progress == progress_.end() ? Progress{} : progress->second, placeOf(job));
}

int64_t JobQueue::placeOf(const Job& job) {
    if (job.state != JobState::Queued) return 0;
    const auto known = places_.find(job.id);
    if (known != places_.end()) return known->second;
    const auto order = stores_.jobs.waiting(isDrawn(job.kind), nowMs());
    const auto at =
        std::find_if(order.begin(), order.end(), [&](const WaitingJob& each) { return each.id == job.id; });
    return at == order.end() ? 0 : at - order.begin() + 1;
}

int64_t JobQueue::nextPlace(const std::string& session) {
    const auto order = stores_.jobs.waiting(true, nowMs());
    const bool isBusy = runner_.running(true) >= workers_;
    const bool isOwn = std::any_of(order.begin(), order.end(),
                                   [&](const WaitingJob& each) { return each.session == session; });
    // The first of a session comes before the second ones of others.
    std::vector<std::string> sessions;
    for (const WaitingJob& each : order)
        if (std::find(sessions.begin(), sessions.end(), each.session) == sessions.end())
            sessions.push_back(each.session);
    const auto before = static_cast<int64_t>(isOwn ? order.size() : sessions.size());
    return before + (isBusy || before > 0 ? 1 : 0);
}

void JobQueue::tell(const Job& job) { events_.tell({job.session, job.id}, "job", show(job)); }

/// To whoever waits and has come nearer.
void JobQueue::tellPlaces() {
    std::map<std::string, int64_t> places;
    for (const bool areDrawn : {true, false}) {
        int64_t place = 0;
        for (const WaitingJob& each : stores_.jobs.waiting(areDrawn, nowMs())) places[each.id] = ++place;
    }
    places_.swap(places);
    for (const auto& [id, place] : places_)
        if (const auto before = places.find(id); before == places.end() || before->second != place)
            if (const auto job = stores_.jobs.find(id)) tell(*job);
}

void JobQueue::expireThoseWithoutVideo() {
    for (const std::string& id : stores_.jobs.expire())
        if (const auto job = stores_.jobs.find(id)) tell(*job);
}

void JobQueue::removeExpired() {
    if (isStopped_) return;
    guarded([this] {
        const int64_t now = nowMs();
        stores_.videos.removeExpired(now);
        stores_.uploads.removeExpired(now);
        stores_.uploads.sweep(kOrphanAge);
        stores_.videos.sweep(kOrphanAge);
        expireThoseWithoutVideo();
        stores_.jobs.forgetAnswersBefore(now - kDay);
        stores_.jobs.forgetBefore(now - parts_.settings.videosStayDays * kDay);
    });
    parts_.timers.after(kExpiryEvery, [this] { removeExpired(); });
}

}  // namespace multiscene::studio
