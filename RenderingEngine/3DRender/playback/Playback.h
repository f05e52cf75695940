// What one video is played with, apart from what draws it.
#pragma once

#include <memory>

#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/base/FileGate.h"
#include "playback/PicturesAhead.h"
#include "playback/TextPictureCopy.h"
#include "report/RenderReport.h"

namespace multiscene {

/// One a video; several may play at once. Made by whoever wants the video, filled before it plays, and shared
/// with the driver, which outlives its scenes; nodes reach it through their scene. Gate, report and
/// pictures are safe from any thread; the settings are not changed while the video plays.
class Playback {
  public:
    Playback() = default;
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    /// For another run of the same video: the same fence and values, a report of its own.
    std::shared_ptr<Playback> twin() const {
        auto other = std::make_shared<Playback>();
        other->gate_.allowAllOf(gate_);
        other->settings_ = settings_;
        return other;
    }

    /// The fence: which files the video may open.
    platform::FileGate& gate() { return gate_; }
    /// What was left out or done otherwise.
    RenderReport& report() { return report_; }
    /// The user's values, and what the macros of paths stand for.
    QVMultiSceneRenderShareSettings& settings() { return settings_; }
    /// Pictures that are made while others are shown.
    PicturesAhead& picturesAhead() { return picturesAhead_; }
    /// Where the last text is kept as a picture; its folder is set before the video plays, and stays until
    /// the playback ends.
    TextPictureCopy& textCopy() { return textCopy_; }

  private:
    platform::FileGate gate_;
    RenderReport report_;
    QVMultiSceneRenderShareSettings settings_;
    TextPictureCopy textCopy_;
    PicturesAhead picturesAhead_{gate_};  ///< ends first: its thread needs what stands above
};

}  // namespace multiscene
