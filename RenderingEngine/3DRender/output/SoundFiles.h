#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/audio/AudioFile.h"
#include "platform/base/Value.h"
#include "playback/Playback.h"

namespace multiscene {

/// The sounds of one mix, each file opened once. One thread at a time; the playback outlives it.
class SoundFiles {
  public:
    using Sound = std::shared_ptr<const platform::AudioFile>;

    explicit SoundFiles(Playback& playback) : playback_(playback) {}

    /// The file of an audio entry; none when it cannot be read, which the report tells. Throws
    /// Error(Template) for a file outside the fence.
    Sound open(const platform::Value& entry);

  private:
    Sound read(const platform::Value& entry, const std::string& path);

    Playback& playback_;
    std::map<std::string, Sound> files_;
};

}  // namespace multiscene
