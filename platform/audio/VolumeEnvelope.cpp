#include "platform/audio/VolumeEnvelope.h"

#include <algorithm>
#include <limits>

#include "platform/audio/AudioFile.h"

namespace platform {

namespace {
constexpr int64_t kFramesPerHundredth = kAudioSampleRate / 100;
}

float VolumeEnvelope::Entry::volumeAtFrame(int64_t frame) const {
    if (frame >= endFrame) return endVolume;
    const double progress =
        static_cast<double>(frame - startFrame) / static_cast<double>(endFrame - startFrame);
    return static_cast<float>(startVolume + (endVolume - startVolume) * progress);
}

void VolumeEnvelope::setVolume(float volume, int64_t hundredths) {
    add(volume, volume, hundredths, hundredths);
}

void VolumeEnvelope::addRamp(float startVolume, float endVolume, int64_t startHundredths,
                             int64_t endHundredths) {
    if (endHundredths > startHundredths) add(startVolume, endVolume, startHundredths, endHundredths);
}

void VolumeEnvelope::add(float startVolume, float endVolume, int64_t startHundredths, int64_t endHundredths) {
    entries_.push_back({std::max(startVolume, 0.0f), std::max(endVolume, 0.0f),
                        startHundredths * kFramesPerHundredth, endHundredths * kFramesPerHundredth});
}

float VolumeEnvelope::volumeAtFrame(int64_t frame) const {
    const Entry* entry = entryAtFrame(frame);
    return entry ? entry->volumeAtFrame(frame) : 1.0f;
}

// The last added ramp that runs, else what ended last.
const VolumeEnvelope::Entry* VolumeEnvelope::entryAtFrame(int64_t frame) const {
    const Entry *running = nullptr, *ended = nullptr;
    for (const Entry& entry : entries_) {
        if (entry.endFrame <= frame) {
            if (!ended || entry.endFrame >= ended->endFrame) ended = &entry;
        } else if (entry.startFrame <= frame) {
            running = &entry;
        }
    }
    return running ? running : ended;
}

int64_t VolumeEnvelope::nextChangeAfterFrame(int64_t frame) const {
    int64_t next = std::numeric_limits<int64_t>::max();
    for (const Entry& entry : entries_) {
        if (entry.startFrame > frame) next = std::min(next, entry.startFrame);
        if (entry.endFrame > frame) next = std::min(next, entry.endFrame);
    }
    return next;
}

void VolumeEnvelope::apply(float* samples, int64_t firstFrame, int64_t frames) const {
    if (isEmpty()) return;
    const int64_t end = firstFrame + frames;
    for (int64_t frame = firstFrame; frame < end;) {
        // Up to the next change one entry rules.
        const Entry* entry = entryAtFrame(frame);
        const int64_t next = std::min(nextChangeAfterFrame(frame), end);
        for (; frame < next; ++frame) {
            const float volume = entry ? entry->volumeAtFrame(frame) : 1.0f;
            for (int channel = 0; channel < kAudioChannels; ++channel) *samples++ *= volume;
        }
    }
}

}  // namespace platform
