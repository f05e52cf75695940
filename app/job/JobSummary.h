#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/Model/MediaFormat.h"
#include "app/job/DrawnBy.h"
#include "platform/audio/AudioMix.h"
#include "platform/media/VideoWriter.h"
#include "report/FrameStatistics.h"
#include "report/RenderReport.h"

namespace multiscene {

class GroupRun;
struct PreparedGroup;

/// What a finished job has done.
struct JobSummary {
    std::filesystem::path output;
    MediaFormat format;
    int64_t frames = 0;      ///< rendered
    int64_t pictures = 0;    ///< written as picture files; 0 for a video
    double wallSeconds = 0;  ///< of the whole job
    /// What was left out, each once: missing files, shaders that do not build.
    std::vector<RenderReport::Entry> skipped;
    std::vector<RenderReport::Entry> usedOtherwise;  ///< not as the template says, each once
    std::vector<std::string> missingInputs;          ///< keys that the user did not give
    FrameStatistics statistics;
    DrawnBy drawnBy;
    platform::VideoWriter::Statistics encoder;      ///< of a video
    std::optional<platform::AudioMixReport> sound;  ///< none: the video is silent
    std::optional<double> wantedLoudness;           ///< LUFS

    double videoSeconds() const { return static_cast<double>(frames) / format.framesPerSecond; }
};

/// The summary of a group that has played; the caller adds what it knows besides. Takes the render report,
/// without the entries that only say that an input was not given.
JobSummary summaryOf(const PreparedGroup& group, int64_t frames, const GroupRun& run);

}  // namespace multiscene
