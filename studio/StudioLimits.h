// What clients may take of a studio: rows of the program's table of limits, which --limits shows.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/Limits.h"

namespace multiscene::studio {

/// Made with what the table says; each can be changed by its name in it.
struct StudioLimits {
    StudioLimits();

    // Jobs that wait, in all and of a session; how often one is tried; how long one may be expected to take.
    uint64_t jobs, jobsOfSession, jobAttempts, jobSeconds;
    // What a body may hold.
    uint64_t bodyBytes, values, valueCharacters, metadataBytes;
    // Uploads: bytes of each, and of a session's all; how many, kept and not yet looked at.
    uint64_t photoBytes, videoBytes, soundBytes, storedBytes, uploads, uploadsWaiting;
    uint64_t previews, previewSeconds, webhooks, devices;
    // Tries to be let in, a minute.
    uint64_t tries, codeTries;
    // Of the server: see platform/http/Limits.h.
    uint64_t connections, connectionsOfAddress, streams, headBytes, headSeconds, idleSeconds, rate,
        rateSeconds;

    struct Row {
        platform::Limit limit;
        uint64_t StudioLimits::*value;
    };
    static std::span<const Row> rows();

    /// Whether "NAME=NUMBER" names one.
    static bool knows(std::string_view nameAndValue);
    /// Throws platform::Error(Usage) for what knows() does not, and for a value that is no number from 1 on.
    void set(const std::string& nameAndValue);
    /// Those of words like {"--limit", "maxStudioJobs=10"}; others are passed over.
    void setThoseOf(std::span<const std::string> words);
};

}  // namespace multiscene::studio
