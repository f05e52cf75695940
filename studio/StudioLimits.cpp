#include "studio/StudioLimits.h"

#include <algorithm>
#include <charconv>

#include "platform/base/Error.h"

namespace multiscene::studio {

using platform::Limit;
using platform::limits::kGiga;
using platform::limits::kKilo;
using platform::limits::kMega;

namespace {

constexpr std::string_view kLater = "refused for now", kNever = "refused", kClosed = "the connection ends",
                           kOldest = "the one that was not used for longest ends";

constexpr StudioLimits::Row kRows[] = {
    {{"maxStudioJobs", 100, "jobs", "that wait in the studio", kLater}, &StudioLimits::jobs},
    {{"maxStudioJobsOfSession", 50, "jobs", "that wait, of one session", kLater},
     &StudioLimits::jobsOfSession},
    {{"maxStudioJobAttempts", 3, "times", "that an interrupted job is made", "it has failed"},
     &StudioLimits::jobAttempts},
    {{"maxStudioJobSeconds", 7200, "seconds", "that a job is expected to take", kNever},
     &StudioLimits::jobSeconds},
    {{"maxStudioBodyBytes", 256 * kKilo, "bytes", "of a request's JSON, unless it is known to be shorter",
      kNever},
     &StudioLimits::bodyBytes},
    {{"maxStudioValues", 500, "values", "that a template is given", kNever}, &StudioLimits::values},
    {{"maxStudioValueCharacters", 10'000, "characters", "of each that is a text", kNever},
     &StudioLimits::valueCharacters},
    {{"maxStudioMetadataBytes", 4096, "bytes", "that a job keeps for who asked", kNever},
     &StudioLimits::metadataBytes},
    {{"maxStudioPhotoBytes", 64 * kMega, "bytes", "a photo that is uploaded", kNever},
     &StudioLimits::photoBytes},
    {{"maxStudioVideoBytes", kGiga, "bytes", "a video that is uploaded", kNever}, &StudioLimits::videoBytes},
    {{"maxStudioSoundBytes", 256 * kMega, "bytes", "a sound that is uploaded", kNever},
     &StudioLimits::soundBytes},
    {{"maxStudioStoredBytes", 2 * kGiga, "bytes", "of all uploads of a session", kLater},
     &StudioLimits::storedBytes},
    {{"maxStudioUploads", 1000, "uploads", "of a session", kLater}, &StudioLimits::uploads},
    {{"maxStudioUploadsWaiting", 100, "uploads", "of a session that nobody has looked at yet", kLater},
     &StudioLimits::uploadsWaiting},
    {{"maxStudioPreviews", 100, "previews", "that are open", kOldest}, &StudioLimits::previews},
    {{"maxStudioPreviewSeconds", 600, "seconds", "that a preview is not used", "it ends"},
     &StudioLimits::previewSeconds},
    {{"maxStudioWebhooks", 20, "webhooks", "of a session", kLater}, &StudioLimits::webhooks},
    {{"maxStudioDevices", 100, "devices", "of the network that were let in", kLater}, &StudioLimits::devices},
    {{"maxStudioTries", 5, "tries", "to be let in, in a minute, of an address", kLater},
     &StudioLimits::tries},
    {{"maxStudioCodeTries", 30, "tries", "of a pairing code in a minute, of all", kLater},
     &StudioLimits::codeTries},
    {{"maxStudioConnections", 512, "connections", "to the studio", kOldest}, &StudioLimits::connections},
    {{"maxStudioConnectionsOfAddress", 256, "connections", "of one address", kOldest},
     &StudioLimits::connectionsOfAddress},
    {{"maxStudioStreams", 256, "streams", "of events", kLater}, &StudioLimits::streams},
    {{"maxStudioHeadBytes", 16 * kKilo, "bytes", "of a request's head", kNever}, &StudioLimits::headBytes},
    {{"maxStudioHeadSeconds", 10, "seconds", "until a request's head is there", kClosed},
     &StudioLimits::headSeconds},
    {{"maxStudioIdleSeconds", 30, "seconds", "that a connection asks nothing", kClosed},
     &StudioLimits::idleSeconds},
    {{"minStudioRate", kKilo, "bytes", "a second of a body, and of an answer, at the least", kClosed},
     &StudioLimits::rate},
    {{"maxStudioRateSeconds", 5, "seconds", "that it may be slower than that", kClosed},
     &StudioLimits::rateSeconds},
};

std::string_view nameIn(std::string_view nameAndValue) {
    return nameAndValue.substr(0, std::min(nameAndValue.find('='), nameAndValue.size()));
}

const StudioLimits::Row* rowOf(std::string_view nameAndValue) {
    const auto* const row = std::ranges::find(kRows, nameIn(nameAndValue),
                                              [](const StudioLimits::Row& each) { return each.limit.name; });
    return row == std::end(kRows) ? nullptr : row;
}

}  // namespace

StudioLimits::StudioLimits() {
    for (const Row& row : kRows) this->*row.value = row.limit.value;
}

std::span<const StudioLimits::Row> StudioLimits::rows() { return kRows; }

bool StudioLimits::knows(std::string_view nameAndValue) { return rowOf(nameAndValue) != nullptr; }

void StudioLimits::set(const std::string& nameAndValue) {
    const Row* const row = rowOf(nameAndValue);
    const size_t start = std::min(nameIn(nameAndValue).size() + 1, nameAndValue.size());
    constexpr uint64_t most = uint64_t{1} << 50;
    uint64_t value = 0;
    const char *first = nameAndValue.data() + start, *last = nameAndValue.data() + nameAndValue.size();
    const auto result = std::from_chars(first, last, value);
    if (!row || result.ec != std::errc() || result.ptr != last || value < 1 || value > most)
        throw platform::Error(platform::ErrorKind::Usage,
                              "\"" + nameAndValue + "\" is not NAME=NUMBER; the number is 1 or more");
    this->*row->value = value;
}

void StudioLimits::setThoseOf(std::span<const std::string> words) {
    for (size_t at = 0; at + 1 < words.size(); ++at)
        if (words[at] == "--limit" && knows(words[at + 1])) set(words[at + 1]);
}

}  // namespace multiscene::studio
