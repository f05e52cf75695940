// One piece of work that somebody asked for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/Value.h"

namespace multiscene::studio {

enum class JobKind { Video, Draft, Install, Refresh };
enum class JobState { Queued, Running, Cancelling, Done, Failed, Cancelled, Expired };

/// "video", …; the words of the API and of the database.
const char* wordOf(JobKind kind);
const char* wordOf(JobState state);
JobKind jobKindNamed(std::string_view word);
/// None for a word that is no state.
std::optional<JobState> jobStateNamed(std::string_view word);

/// Nothing happens to it any more.
bool hasEnded(JobState state);
/// What draws, as against what changes the catalogue.
inline bool isDrawn(JobKind kind) { return kind == JobKind::Video || kind == JobKind::Draft; }

/// As the database has it. Times are milliseconds since 1970, 0: not yet.
struct Job {
    std::string id, session;
    JobKind kind = JobKind::Video;
    JobState state = JobState::Queued;
    int64_t templateId = 0;  ///< 0: none
    std::string templateTitle, title;
    platform::Value request;   ///< as it was asked for
    platform::Value metadata;  ///< whatever who asked wants to see again
    std::string callback;      ///< a URL that is told of the end; empty: none
    int64_t cost = 0;          ///< milliseconds that it is expected to take
    int64_t total = 0;         ///< frames; 0: unknown
    int attempt = 0;
    int deaths = 0;  ///< of the studio while it ran; not among the attempts
    int64_t notBefore = 0, created = 0, started = 0, ended = 0;
    platform::Value problem;  ///< why it failed; none
    std::string video;        ///< empty: none
};

/// What is known of a job that runs, and kept nowhere.
struct Progress {
    std::string stage;  ///< "preparing", "rendering", "mixing", "publishing"; empty: it does not run
    int64_t frame = 0, total = 0;
    std::optional<double> secondsRemaining;
};

/// As the API shows it. `place`: from 1 on of a job that waits, else 0.
platform::Value valueOf(const Job& job, const Progress& progress, int64_t place);

}  // namespace multiscene::studio
