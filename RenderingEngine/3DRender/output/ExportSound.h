// Places a group's sounds on a timeline: music looped and ducked, effects in their windows, fades. Glossary:
// "Aolume" is volume.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/audio/AudioTimeline.h"
#include "platform/base/Value.h"
#include "playback/Playback.h"

namespace multiscene {

/// Takes audio entries (see SoundSink). Times of the mix are hundredths of a second, truncated. No state; any
/// thread.
class ExportSound {
  public:
    using Entries = std::vector<platform::Value>;

    /// The whole mix under a film of `totalTime` seconds, cut at its end. A sound that cannot be read is left
    /// out and listed in the report, as is one that is longer than its window. Throws Error(Template) for a
    /// file outside the fence.
    static platform::AudioTimeline timelineOf(const Entries& entries, int32_t framesPerSecond,
                                              float totalTime, Playback& playback);

    /// What one entry adds to the mix of all.
    static platform::AudioTrack trackOf(const platform::Value& entry,
                                        const std::shared_ptr<const platform::AudioFile>& sound,
                                        const Entries& entries, int32_t framesPerSecond, float totalTime);

    static bool isMusic(const platform::Value& entry);
    static int64_t hundredthsOfFrame(int64_t frame, int32_t framesPerSecond);
    /// 1 less the mean volume of the effects that sound at the frame; 1 when none does.
    static float volumeWithFps(int64_t frame, const Entries& entries);
    /// The music's volume: ducked under the effects and, in a film of more than 5 s, faded out at its end.
    static platform::VolumeEnvelope updateBgAudioAolumeWithTrackMix(const Entries& entries,
                                                                    int32_t framesPerSecond, float totalTime);
    /// The music from 0 to exactly `totalTime` seconds, end to end as often as needed: the part of it from
    /// "startSeconds" of its entry on. No piece when there is nothing to hear.
    static std::vector<platform::AudioInsertion> addBgAudioWithUrl(
        const std::shared_ptr<const platform::AudioFile>& music, const platform::Value& entry,
        float totalTime);
    /// What the entry of the music wants besides: its "volume" and its own fades, each as long as the film at
    /// most.
    static std::vector<platform::VolumeEnvelope> musicFades(const platform::Value& entry, float totalTime);
    /// The whole sound from its "fpsStart" on. The window, up to "fpsEnd", only carries its volume,
    /// unless the entry has "endsWithWindow".
    static platform::AudioTrack addAudioWithInfo(const platform::Value& entry,
                                                 const std::shared_ptr<const platform::AudioFile>& sound,
                                                 int32_t framesPerSecond);
    /// The fade of the whole film: none up to 5 s, else full volume until T - 4 s and down to nothing at T.
    static platform::VolumeEnvelope synthesisAudioFade(float totalTime);
};

}  // namespace multiscene
