#include "app/preview/StillPerformer.h"

#include <sys/socket.h>

#include <algorithm>
#include <utility>

#include "app/preview/StillTalk.h"
#include "platform/base/Activity.h"
#include "platform/base/Clock.h"
#include "platform/base/CurrentError.h"
#include "platform/base/DispatchQueue.h"
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

}  // namespace

StillPerformer::StillPerformer(platform::FileHandle asker, const RenderRequest& request,
                               JobObserver& observer, std::stop_token stop)
    : asker_(std::move(asker)),
      request_(request),
      observer_(observer),
      stop_(std::move(stop)),
      values_(request.inputs.media),
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
        if (verb == stillTalk::kStill) {
            if (still_) overtaken = still_->id;
            still_ = Asked{line.integer("id"), std::max<int64_t>(line.integer("frame"), 0), line["values"]};
        } else if (verb == stillTalk::kStrip) {
            stripAsked_ = Asked{line.integer("id"), std::max(line.integer("every"), kLeastEvery), {}};
        } else if (verb == stillTalk::kMoments) {
            momentsAsked_ = line.integer("id");
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
    return still_ || stripAsked_ || momentsAsked_ || (strip_ && isAtRest);
}

/// Who goes on quickly wants to see something on the way.
bool StillPerformer::isBetterAsked(int64_t frame) {
    if (isOver()) return true;
    const std::lock_guard lock(mutex_);
    return still_ && still_->frame != frame && platform::monotonicSeconds() - shownAt_ < kPatience;
}

// What is done

void StillPerformer::run() {
    open();
    for (;;) {
        DispatchQueue::main().pumpUntil([this] { return hasWork(); });
        if (stop_.stop_requested()) throw Error(platform::ErrorKind::Cancelled, "cancelled");
        std::optional<Asked> still, strip;
        std::optional<int64_t> moments;
        {
            const std::lock_guard lock(mutex_);
            if (isClosed_) return;
            still = std::exchange(still_, std::nullopt);
            if (!still) strip = std::exchange(stripAsked_, std::nullopt);
            if (!still && !strip) moments = std::exchange(momentsAsked_, std::nullopt);
        }
        if (still)
            performStill(*still);
        else if (strip)
            startStrip(*strip);
        else if (moments)
            findMoments(*moments);
        else if (strip_)
            performStrip();
    }
}

void StillPerformer::open() {
    player_ = std::make_unique<HeldPlayer>(request_, observer_, stop_);
    player_->holdFrames();
    const MediaFormat& format = player_->format();
    picture_.resize(static_cast<size_t>(format.width) * static_cast<size_t>(format.height) * 4);
    const auto& missing = player_->missingInputs();
    tell(stillTalk::kOpened, {{"name", player_->name()},
                              {"frames", player_->frames()},
                              {"framesPerSecond", format.framesPerSecond},
                              {"width", format.width},
                              {"height", format.height},
                              {"missing", Value::Array(missing.begin(), missing.end())}});
}

std::optional<int64_t> StillPerformer::show(int64_t frame, const std::function<bool()>& isGivenUp) {
    const MediaFormat& format = player_->format();
    const platform::Canvas canvas{.pixels = picture_.data(),
                                  .stride = ptrdiff_t{format.width} * 4,
                                  .width = format.width,
                                  .height = format.height};
    auto outcome = player_->show(frame, canvas, isGivenUp);
    if (outcome == HeldPlayer::Outcome::BeyondEnd && player_->frames() > 0) {
        frame = player_->frames() - 1;
        outcome = player_->show(frame, canvas, isGivenUp);
    }
    return outcome == HeldPlayer::Outcome::Shown ? std::optional(frame) : std::nullopt;
}

void StillPerformer::performStill(const Asked& asked) {
    try {
        setValues(asked.values);
        if (const auto shown = show(asked.frame, [&] { return isBetterAsked(asked.frame); }))
            tellPicture(stillTalk::kStill, asked.id, *shown);
        else
            tell(stillTalk::kOvertaken, {{"id", asked.id}});
    } catch (const Error& error) {
        if (error.kind() == platform::ErrorKind::Cancelled) throw;
        tellProblem(asked.id, error);
    }
    shownAt_ = workedAt_ = platform::monotonicSeconds();
}

/// None are the ones that are there.
void StillPerformer::setValues(const Value& values) {
    if (values.isNone() || values == values_) return;
    JobInputs inputs;
    inputs.media = values;
    player_->setInputs(inputs, stop_);
    values_ = values;
    if (strip_) endStrip(false);
}

void StillPerformer::startStrip(const Asked& asked) {
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
        tellProblem(strip_->id, error);
        strip_.reset();
    }
}

void StillPerformer::endStrip(bool isWhole) {
    tell(stillTalk::kStrip, {{"id", strip_->id}, {"isWhole", isWhole}});
    strip_.reset();
}

void StillPerformer::findMoments(int64_t id) {
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

void StillPerformer::tellProblem(int64_t id, const Error& error) {
    tell(stillTalk::kProblem, {{"id", id},
                               {"code", error.exitCode()},
                               {"message", error.message()},
                               {"file", error.file()},
                               {"key", error.key()}});
}

}  // namespace multiscene
