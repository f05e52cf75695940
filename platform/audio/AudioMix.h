// The finished sound of a film: mixed, brought to a loudness, kept under full scale, encoded.
#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>

#include "platform/audio/AudioTimeline.h"
#include "platform/audio/LoudnessMeter.h"

namespace platform {

/// The highest true peak that an encoded mix has, in dB over full scale.
inline constexpr double kHighestTruePeak = -1;
/// The most by which a mix is raised towards a loudness, in dB.
inline constexpr double kMostGain = 20;

struct AudioMixSettings {
    int bitRate = 128000;  ///< bits a second, AAC
    /// LUFS, integrated (EBU R 128), to which the mix is brought by one gain, of kMostGain at most; none: the
    /// mix stays as loud as it is. Silence stays silence.
    std::optional<double> loudness = {};
};

/// What became of a mix.
struct AudioMixReport {
    Loudness before;         ///< of the mix itself
    Loudness after;          ///< of what the encoded file sounds like
    double gain = 0;         ///< dB, applied to all of it
    bool isLimited = false;  ///< peaks had to be turned down
};

/// Mixes the timeline and encodes it as AAC into an M4A file at `output`, whatever that name ends in. No true
/// peak of what the file sounds like is over kHighestTruePeak; a mix that has none is not touched. The same
/// timeline always gives the same bytes. Throws Error: Transient for a full disk, Cancelled when `stop` was
/// requested, else Failed (also for an empty timeline); no output file is left then.
AudioMixReport writeAudioMix(const AudioTimeline& timeline, const std::filesystem::path& output,
                             const AudioMixSettings& settings = {}, std::stop_token stop = {});

}  // namespace platform
