#include "studio/jobs/Job.h"

#include <array>

#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;

namespace {

constexpr std::array kKinds{"video", "draft", "install", "refresh"};
constexpr std::array kStates{"queued", "running", "cancelling", "done", "failed", "cancelled", "expired"};

template <typename Words>
std::optional<size_t> placeIn(const Words& words, std::string_view word) {
    for (size_t at = 0; at < words.size(); ++at)
        if (word == words[at]) return at;
    return std::nullopt;
}

Value timeOrNull(int64_t ms) { return ms > 0 ? Value(timeText(ms)) : Value(); }
Value textOrNull(const std::string& text) { return text.empty() ? Value() : Value(text); }

}  // namespace

const char* wordOf(JobKind kind) { return kKinds.at(static_cast<size_t>(kind)); }
const char* wordOf(JobState state) { return kStates.at(static_cast<size_t>(state)); }

JobKind jobKindNamed(std::string_view word) {
    return static_cast<JobKind>(placeIn(kKinds, word).value_or(0));
}

std::optional<JobState> jobStateNamed(std::string_view word) {
    const auto place = placeIn(kStates, word);
    return place ? std::optional(static_cast<JobState>(*place)) : std::nullopt;
}

bool hasEnded(JobState state) { return state > JobState::Cancelling; }

Value valueOf(const Job& job, const Progress& progress, int64_t place) {
    const bool isDone = job.state == JobState::Done || job.state == JobState::Expired;
    const int64_t total = progress.total > 0 ? progress.total : job.total;
    return Value::Dictionary{
        {"id", job.id},
        {"kind", wordOf(job.kind)},
        {"state", wordOf(job.state)},
        {"stage", hasEnded(job.state) ? Value() : textOrNull(progress.stage)},
        {"template", Value::Dictionary{{"id", job.templateId}, {"title", job.templateTitle}}},
        {"frame", isDone ? total : progress.frame},
        {"total", total},
        {"secondsRemaining", progress.secondsRemaining ? Value(*progress.secondsRemaining) : Value()},
        {"place", place > 0 ? Value(place) : Value()},
        {"attempt", job.attempt},
        {"created", timeText(job.created)},
        {"started", timeOrNull(job.started)},
        {"ended", timeOrNull(job.ended)},
        {"problem", job.problem},
        {"video", textOrNull(job.video)},
        {"title", job.title},
        {"metadata", job.metadata}};
}

}  // namespace multiscene::studio
