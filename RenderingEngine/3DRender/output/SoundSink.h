// Where the sounds of a playing group go: the exporter's mix, or the live player of a preview.
#pragma once

#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// Any thread.
class SoundSink {
  public:
    virtual ~SoundSink() = default;

    /// An audio entry: "type" ("bgAudio" for the music), "audioPath", "audioName", "volume" (0 to 1; the
    /// music's also above), "fpsStart", "fpsEnd" (frames of the group), "isLoop". It may bring
    /// "startSeconds", where in its file it begins, the music besides "fadeInSeconds" and "fadeOutSeconds",
    /// at the film's start and end.
    virtual void addAudioTrackWithInfo(const platform::Value& info) = 0;
    /// Ends the sounds of this "audioName"; the music only when `isBgAudio`. A mix needs no end.
    virtual void deleteChannelWithKey(const std::string& /*audioName*/, bool /*isBgAudio*/) {}
    virtual void pauseAudio() {}
    virtual void resumeAudio() {}
};

}  // namespace multiscene
