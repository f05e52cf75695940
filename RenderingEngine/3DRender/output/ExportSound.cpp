#include "output/ExportSound.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "output/SoundFiles.h"

namespace multiscene {

namespace {

using SoundFile = SoundFiles::Sound;

constexpr float fadedFilm = 5;      // seconds: shorter films do not fade
constexpr float musicFade = 5;      // seconds
constexpr float filmFade = 4;       // seconds
constexpr int64_t cutFade = 20;     // hundredths of a second
constexpr float longestMix = 1e7f;  // seconds, far beyond any film: keeps the arithmetic in range

/// The sound of a film that is shown in the window, and not after it.
bool endsWithWindow(const platform::Value& entry) { return entry.boolean("endsWithWindow"); }

int64_t hundredths(float seconds) {
    return static_cast<int64_t>(std::clamp(seconds, -longestMix, longestMix) * 100);
}

float secondsOfFrame(int64_t frame, int32_t framesPerSecond) {
    return static_cast<float>(static_cast<double>(frame) / framesPerSecond);
}

float secondsOf(const platform::AudioFile& sound) {
    return static_cast<float>(CMTimeGetSeconds(sound.duration()));
}

platform::CMTime time(int64_t hundredthsOfSecond) { return platform::CMTimeMake(hundredthsOfSecond, 100); }

void reportLongerThanWindow(const platform::Value& entry, const platform::AudioFile& sound,
                            int32_t framesPerSecond, Playback& playback) {
    const int64_t window = ExportSound::hundredthsOfFrame(entry.integer("fpsEnd"), framesPerSecond) -
                           ExportSound::hundredthsOfFrame(entry.integer("fpsStart"), framesPerSecond);
    const int64_t length = hundredths(static_cast<float>(CMTimeGetSeconds(sound.duration())));
    if (length > window)
        playback.report().add({.what = "is longer than its time in the scene and plays to its end",
                               .name = entry.string("audioPath"),
                               .scene = {},
                               .node = {},
                               .isLeftOut = false});
}

/// Hundredths of a second at which the last piece ends.
int64_t endOf(const platform::AudioTimeline& timeline) {
    double end = 0;
    for (const auto& track : timeline.tracks)
        for (const auto& piece : track.insertions)
            end = std::max(end, CMTimeGetSeconds(piece.at) + CMTimeGetSeconds(piece.duration));
    return static_cast<int64_t>(std::ceil(std::min<double>(end, longestMix) * 100));
}

}  // namespace

bool ExportSound::isMusic(const platform::Value& entry) { return entry.string("type") == "bgAudio"; }

int64_t ExportSound::hundredthsOfFrame(int64_t frame, int32_t framesPerSecond) {
    return hundredths(secondsOfFrame(frame, framesPerSecond));
}

float ExportSound::volumeWithFps(int64_t frame, const Entries& entries) {
    float sum = 0;
    int count = 0;
    for (const platform::Value& entry : entries) {
        if (isMusic(entry) || frame < entry.integer("fpsStart") || frame >= entry.integer("fpsEnd")) continue;
        sum += entry.real("volume");
        ++count;
    }
    return count == 0 ? 1 : 1 - sum / static_cast<float>(count);
}

platform::VolumeEnvelope ExportSound::updateBgAudioAolumeWithTrackMix(const Entries& entries,
                                                                      int32_t framesPerSecond,
                                                                      float totalTime) {
    platform::VolumeEnvelope volume;
    volume.setVolume(1, 0);
    float lastEnd = 0;
    for (const platform::Value& entry : entries) {
        if (isMusic(entry)) continue;
        for (const char* key : {"fpsStart", "fpsEnd"}) {
            const int64_t frame = entry.integer(key);
            volume.setVolume(volumeWithFps(frame, entries), hundredthsOfFrame(frame, framesPerSecond));
        }
        // The last entry's end counts, not the latest one.
        lastEnd = secondsOfFrame(entry.integer("fpsEnd"), framesPerSecond);
    }
    if (totalTime > fadedFilm)
        volume.addRamp(1, 0, hundredths(std::max(totalTime - musicFade, lastEnd)), hundredths(totalTime));
    return volume;
}

std::vector<platform::AudioInsertion> ExportSound::addBgAudioWithUrl(const SoundFile& music,
                                                                     const platform::Value& entry,
                                                                     float totalTime) {
    const double length = std::min(totalTime, longestMix);
    const auto ticks = static_cast<int64_t>(length * platform::kAudioSampleRate);
    if (ticks <= 0) return {};
    return {{.file = music,
             .sourceStart = time(hundredths(entry.real("startSeconds"))),
             .duration = platform::CMTimeMake(ticks, platform::kAudioSampleRate),
             .at = time(0),
             .isLooped = true}};
}

std::vector<platform::VolumeEnvelope> ExportSound::musicFades(const platform::Value& entry, float totalTime) {
    std::vector<platform::VolumeEnvelope> fades(1);
    fades[0].setVolume(entry.has("volume") ? entry.real("volume") : 1, 0);
    const int64_t end = hundredths(totalTime);
    const int64_t in = std::min(hundredths(entry.real("fadeInSeconds")), end);
    const int64_t out = std::min(hundredths(entry.real("fadeOutSeconds")), end);
    if (in > 0) fades.emplace_back().addRamp(0, 1, 0, in);
    if (out > 0) fades.emplace_back().addRamp(1, 0, end - out, end);
    return fades;
}

platform::AudioTrack ExportSound::addAudioWithInfo(const platform::Value& entry, const SoundFile& sound,
                                                   int32_t framesPerSecond) {
    const int64_t start = hundredthsOfFrame(entry.integer("fpsStart"), framesPerSecond);
    const int64_t end = hundredthsOfFrame(entry.integer("fpsEnd"), framesPerSecond);
    const int64_t sourceStart = hundredths(entry.real("startSeconds"));
    const int64_t left = sound->frameCount() - sourceStart * platform::kAudioSampleRate / 100;
    platform::AudioTrack track;
    track.insertions.push_back(
        {.file = sound,
         .sourceStart = time(sourceStart),
         .duration = platform::CMTimeMake(std::max<int64_t>(left, 0), platform::kAudioSampleRate),
         .at = time(start)});
    // The volume of the window holds after it, and in a window of no length too.
    track.volume.setVolume(entry.real("volume"), start);
    if (!endsWithWindow(entry) || hundredths(secondsOf(*sound)) - sourceStart <= end - start) return track;
    track.insertions.back().duration = time(std::max<int64_t>(end - start, 0));
    if (end - start > 2 * cutFade) track.volume.addRamp(entry.real("volume"), 0, end - cutFade, end);
    return track;
}

platform::VolumeEnvelope ExportSound::synthesisAudioFade(float totalTime) {
    platform::VolumeEnvelope volume;
    if (totalTime <= fadedFilm) return volume;
    volume.addRamp(1, 1, 0, hundredths(totalTime - fadedFilm));
    volume.addRamp(1, 0, hundredths(totalTime - filmFade), hundredths(totalTime));
    return volume;
}

platform::AudioTrack ExportSound::trackOf(const platform::Value& entry, const SoundFile& sound,
                                          const Entries& entries, int32_t framesPerSecond, float totalTime) {
    if (!isMusic(entry)) return addAudioWithInfo(entry, sound, framesPerSecond);
    return {.insertions = addBgAudioWithUrl(sound, entry, totalTime),
            .volume = updateBgAudioAolumeWithTrackMix(entries, framesPerSecond, totalTime),
            .fades = musicFades(entry, totalTime)};
}

platform::AudioTimeline ExportSound::timelineOf(const Entries& entries, int32_t framesPerSecond,
                                                float totalTime, Playback& playback) {
    platform::AudioTimeline timeline;
    SoundFiles files(playback);
    for (const platform::Value& entry : entries) {
        const SoundFile sound = files.open(entry);
        if (!sound) continue;
        if (!isMusic(entry) && !endsWithWindow(entry))
            reportLongerThanWindow(entry, *sound, framesPerSecond, playback);
        timeline.tracks.push_back(trackOf(entry, sound, entries, framesPerSecond, totalTime));
    }
    timeline.masterVolume = synthesisAudioFade(totalTime);
    // What sounds after the film is never heard, so it is not encoded either.
    timeline.duration = time(std::min(endOf(timeline), hundredths(totalTime) + 1));
    return timeline;
}

}  // namespace multiscene
