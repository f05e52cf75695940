#include "app/preview/StillPerformer.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "app/preview/StillTalk.h"
#include "app/workbench/SceneOutline.h"
#include "platform/base/Activity.h"
#include "platform/base/Clock.h"
#include "platform/base/CurrentError.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "platform/image/ImageWriter.h"

namespace multiscene {

using platform::DispatchQueue;
using platform::Error;
using platform::Value;

namespace {

constexpr int kQuality = 80;  // of 100
constexpr double kPatience =
    0.4;  // seconds without a picture, after which one that is overtaken is drawn all the same
constexpr double kRest = 0.3;                          // seconds without a still, after which a strip goes on
constexpr double kSignInterval = 1;                    // seconds: who waits is alive
constexpr int64_t kLeastEvery = 1, kMostStrip = 2000;  // frames
constexpr const char* kSampleInputs = "sample/inputs.json";

Error nothingOpen() { return Error(platform::ErrorKind::Template, "nothing of it can be shown yet"); }

}  // namespace

StillPerformer::StillPerformer(platform::FileHandle asker, RenderRequest request, bool stays,
                               JobObserver& observer, std::stop_token stop)
    : asker_(std::move(asker)),
      request_(std::move(request)),
      stays_(stays),
      observer_(observer),
      stop_(std::move(stop)),
      values_(request_.inputs.media),
      listener_([this] { listen(); }) {}

StillPerformer::~StillPerformer() {
    ::shutdown(asker_.descriptor(), SHUT_RDWR);  // ends the listening
    listener_.join();
}

// What is asked

void StillPerformer::listen() {
    try {
        while (const auto line = asker_.readLine(stillTalk::kLongestLine))
            take(platform::parseJson(*line, "what is asked"));
    } catch (const Error&) {
    }
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }
    wake();
}

void StillPerformer::wake() {
    DispatchQueue::main().async([] {});
}

void StillPerformer::take(const Value& line) {
    const std::string verb = line.string("do");
    std::optional<int64_t> overtaken;
    {
        const std::lock_guard lock(mutex_);
        const int64_t id = line.integer("id"), frame = std::max<int64_t>(line.integer("frame"), 0);
        if (verb == stillTalk::kStill) {
            if (still_) overtaken = still_->id;
            still_ = Asked{id, frame, line["values"], line.string("trial")};
        } else if (verb == stillTalk::kTrace) {
            if (traceAsked_) overtaken = traceAsked_->id;
            traceAsked_ = Asked{id, frame, {}, {}};
        } else if (verb == stillTalk::kStrip) {
            stripAsked_ = Asked{id, std::max(line.integer("every"), kLeastEvery), {}, {}};
        } else if (verb == stillTalk::kMoments) {
            momentsAsked_ = id;
        } else if (verb == stillTalk::kOutline) {
            outlineAsked_ = id;
        } else if (verb == stillTalk::kOpen) {
            isOpenAsked_ = stays_;
        }
    }
    if (overtaken) tell(stillTalk::kOvertaken, {{"id", *overtaken}});
    wake();
}

bool StillPerformer::isOver() {
    if (const double now = platform::monotonicSeconds(); now - signedAt_ > kSignInterval) {
        signedAt_ = now;
        platform::activity::sign();
    }
    const std::lock_guard lock(mutex_);
    return isClosed_ || stop_.stop_requested();
}

/// Asked about twenty times a second.
bool StillPerformer::hasWork() {
    if (isOver()) return true;
    const std::lock_guard lock(mutex_);
    const bool isAtRest = platform::monotonicSeconds() - workedAt_ > kRest;
    return isOpenAsked_ || still_ || traceAsked_ || outlineAsked_ || stripAsked_ || momentsAsked_ ||
           (strip_ && isAtRest);
}

/// Who goes on quickly wants to see something on the way.
bool StillPerformer::isBetterAsked(int64_t frame) {
    if (isOver()) return true;
    const std::lock_guard lock(mutex_);
    return still_ && still_->frame != frame && platform::monotonicSeconds() - shownAt_ < kPatience;
}

// What is done

void StillPerformer::run() {
    for (;;) {
        if (const Work work = nextWork()) work();
        DispatchQueue::main().pumpUntil([this] { return hasWork(); });
        if (stop_.stop_requested()) throw Error(platform::ErrorKind::Cancelled, "cancelled");
        const std::lock_guard lock(mutex_);
        if (isClosed_) return;
    }
}

/// What somebody waits for comes first.
StillPerformer::Work StillPerformer::nextWork() {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isOpenAsked_, false)) return [this] { stays_ ? openAgain() : open(); };
    if (const auto still = std::exchange(still_, std::nullopt))
        return [this, asked = *still] { performStill(asked); };
    if (const auto trace = std::exchange(traceAsked_, std::nullopt))
        return [this, asked = *trace] { performTrace(asked); };
    if (const auto id = std::exchange(outlineAsked_, std::nullopt))
        return [this, asked = *id] { tellOutline(asked); };
    if (const auto strip = std::exchange(stripAsked_, std::nullopt))
        return [this, asked = *strip] { startStrip(asked); };
    if (const auto id = std::exchange(momentsAsked_, std::nullopt))
        return [this, asked = *id] { findMoments(asked); };
    if (strip_) return [this] { performStrip(); };
    return {};
}

/// What was open before stays where this fails.
void StillPerformer::open() {
    auto player = std::make_unique<HeldPlayer>(request_, observer_, stop_);
    player->holdFrames();
    moments_.reset();
    player_ = std::move(player);
    const MediaFormat& format = player_->format();
    picture_.resize(static_cast<size_t>(format.width) * static_cast<size_t>(format.height) * 4);
    if (stays_) {
        trials_ = trialsOf(player_->group().playable.inputs, request_.inputs.mediaFile);
        trial_ = trials_.front().name;
    }
    tellOpened();
}

void StillPerformer::openAgain() {
    try {
        useSample();
        open();
    } catch (const Error& error) {
        if (error.kind() == platform::ErrorKind::Cancelled) throw;
        tellProblem(stillTalk::kRefused, 0, error);
    }
}

void StillPerformer::useSample() {
    const std::filesystem::path file = std::filesystem::path(request_.source) / kSampleInputs;
    request_.inputs.mediaFile = platform::isFile(file) ? file : std::filesystem::path();
}

void StillPerformer::tellOpened() {
    const MediaFormat& format = player_->format();
    const auto& missing = player_->missingInputs();
    Value::Dictionary fields{{"name", player_->name()},
                             {"frames", player_->frames()},
                             {"framesPerSecond", format.framesPerSecond},
                             {"width", format.width},
                             {"height", format.height},
                             {"missing", Value::Array(missing.begin(), missing.end())}};
    if (stays_) {
        Value::Array names;
        for (const TrialInputs& trial : trials_) names.emplace_back(trial.name);
        fields["trials"] = std::move(names);
    }
    tell(stillTalk::kOpened, std::move(fields));
}

platform::Canvas StillPerformer::canvas() {
    const MediaFormat& format = player_->format();
    return {.pixels = picture_.data(),
            .stride = ptrdiff_t{format.width} * 4,
            .width = format.width,
            .height = format.height};
}

std::optional<int64_t> StillPerformer::show(int64_t frame, const std::function<bool()>& isGivenUp) {
    auto outcome = player_->show(frame, canvas(), isGivenUp);
    if (outcome == HeldPlayer::Outcome::BeyondEnd && player_->frames() > 0) {
        frame = player_->frames() - 1;
        outcome = player_->show(frame, canvas(), isGivenUp);
    }
    return outcome == HeldPlayer::Outcome::Shown ? std::optional(frame) : std::nullopt;
}

void StillPerformer::performStill(const Asked& asked) {
    try {
        requireOpen();
        setValues(asked);
        if (const auto shown = show(asked.frame, [&] { return isBetterAsked(asked.frame); }))
            tellPicture(stillTalk::kStill, asked.id, *shown);
        else
            tell(stillTalk::kOvertaken, {{"id", asked.id}});
    } catch (const Error& error) {
        if (error.kind() == platform::ErrorKind::Cancelled) throw;
        tellProblem(stillTalk::kProblem, asked.id, error);
    }
    shownAt_ = workedAt_ = platform::monotonicSeconds();
}

void StillPerformer::requireOpen() const {
    if (!player_) throw nothingOpen();
}

/// None are the ones that are there.
void StillPerformer::setValues(const Asked& asked) {
    if (stays_) return setTrial(asked.trial);
    if (asked.values.isNone() || asked.values == values_) return;
    JobInputs inputs;
    inputs.media = asked.values;
    player_->setInputs(inputs, stop_);
    values_ = asked.values;
    if (strip_) endStrip(false);
}

void StillPerformer::setTrial(const std::string& name) {
    const std::string& wanted = name.empty() ? trials_.front().name : name;
    if (wanted == trial_) return;
    const auto trial = std::ranges::find(trials_, wanted, &TrialInputs::name);
    if (trial == trials_.end()) throw Error(platform::ErrorKind::Input, "there is no trial of this name");
    player_->setInputs(trial->inputs, stop_);
    trial_ = wanted;
}

void StillPerformer::performTrace(const Asked& asked) {
    try {
        requireOpen();
        const auto text = player_->trace(asked.frame, canvas(), [this] { return isBetterAsked(-1); });
        if (!text) return tell(stillTalk::kOvertaken, {{"id", asked.id}});
        tell(stillTalk::kTrace, {{"id", asked.id}}, *text);
    } catch (const Error& error) {
        if (error.kind() == platform::ErrorKind::Cancelled) throw;
        tellProblem(stillTalk::kProblem, asked.id, error);
    }
}

void StillPerformer::tellOutline(int64_t id) {
    if (!player_) return tellProblem(stillTalk::kProblem, id, nothingOpen());
    tell(stillTalk::kOutline, {{"id", id}}, platform::jsonText(outlineOf(player_->group())));
}

void StillPerformer::startStrip(const Asked& asked) {
    if (!player_) return;
    if (strip_) endStrip(false);
    strip_ = Strip{asked.id, {}};
    const int64_t end = std::min(player_->frames(), asked.frame * kMostStrip);
    for (int64_t frame = 0; frame < end; frame += asked.frame) strip_->frames.insert(frame);
    if (strip_->frames.empty()) endStrip(true);
}

/// The next one from where the video is held, so that it is seldom played again.
void StillPerformer::performStrip() {
    auto next = strip_->frames.lower_bound(player_->position());
    if (next == strip_->frames.end()) next = strip_->frames.begin();
    const int64_t frame = *next;
    const auto isGivenUp = [this] {
        if (isOver()) return true;
        const std::lock_guard lock(mutex_);
        return still_.has_value();
    };
    try {
        const auto shown = show(frame, isGivenUp);
        if (!shown) return;
        strip_->frames.erase(frame);
        if (*shown == frame) tellPicture(stillTalk::kFrame, strip_->id, frame);
        if (strip_->frames.empty()) endStrip(true);
    } catch (const Error& error) {
        if (error.kind() == platform::ErrorKind::Cancelled) throw;
        tellProblem(stillTalk::kProblem, strip_->id, error);
        strip_.reset();
    }
}

void StillPerformer::endStrip(bool isWhole) {
    tell(stillTalk::kStrip, {{"id", strip_->id}, {"isWhole", isWhole}});
    strip_.reset();
}

void StillPerformer::findMoments(int64_t id) {
    if (!player_) return;
    moments_ =
        std::make_unique<MomentFinder>(player_->group(), [this, id](const MomentFinder::Moments& moments) {
            tell(stillTalk::kMoments,
                 {{"id", id}, {"moments", Value::Dictionary(moments.begin(), moments.end())}});
        });
}

// What is told

void StillPerformer::tell(const std::string& event, Value::Dictionary fields, const std::string& bytes) {
    fields["event"] = event;
    if (!bytes.empty()) fields["bytes"] = static_cast<int64_t>(bytes.size());
    const std::lock_guard lock(writing_);
    asker_.write(platform::jsonText(fields) + "\n");
    asker_.write(bytes);
}

void StillPerformer::tellPicture(const char* event, int64_t id, int64_t frame) {
    const MediaFormat& format = player_->format();
    tell(event, {{"id", id}, {"frame", frame}},
         platform::encodeJpeg({format.width, format.height, picture_.data(), ptrdiff_t{format.width} * 4},
                              kQuality));
}

void StillPerformer::tellProblem(const char* event, int64_t id, const Error& error) {
    tell(event, {{"id", id},
                 {"code", error.exitCode()},
                 {"message", error.message()},
                 {"file", error.file()},
                 {"key", error.key()}});
}

}  // namespace multiscene
