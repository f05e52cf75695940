#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "format/KeyTable.h"

namespace multiscene {

/// The keys of a numbered picture sequence.
extern const KeyTable pictureSequenceKeys;

/// Pictures named by number, shown one after another over the frames of their object. The first pass shows
/// all pictures; later passes leave out the one they start from, since the pass before ended beside it.
class PictureSequence {
  public:
    explicit PictureSequence(const platform::Value& info);

    /// The picture's number at a frame; none outside the object's first and last frame.
    std::optional<int64_t> numberAt(int64_t frame, int64_t objectSartFps, int64_t objectEndFps) const;
    /// The file name at a frame, with its macros.
    std::optional<std::string> animationWithCurrentFps(int64_t frame, int64_t objectSartFps,
                                                       int64_t objectEndFps) const;

  private:
    int32_t stepAt(int64_t framesShown) const;
    std::string fileName(int64_t number) const;

    float animationFps_;  // frames a picture, despite its name
    int64_t animationStart_, animationEnd_;
    std::string animationName_, animationExtension_;
    bool isZero_, isLastLoop_;
};

}  // namespace multiscene
