#pragma once

#include <string>

#include "core/component/QVObject3DComponentBase.h"

namespace multiscene {

extern const KeyTable soundSourceKeys;

/// A sound effect: at its first frame it hands the render driver an audio entry, at its last frame it lets a
/// live preview close the channel. Draws nothing. A file that is missing, or may not be opened, makes no
/// sound and is noted in the render report.
class QVObject3DSoundSourceComponent : public QVObject3DComponentBase {
  public:
    void updateData(const Tick& tick) override;
    void renderComplete(const Tick& tick) override;

    /// The clip's volume; a text names a value of the user, else it is the number itself.
    float audioVolume() const;
    /// "audioKey" joined with the scene's identifier: clips that share it are closed together.
    std::string audioKeyIndfer() const;

  private:
    std::string audioPath() const;
    platform::Value audioEntry(const std::string& path) const;
};

}  // namespace multiscene
