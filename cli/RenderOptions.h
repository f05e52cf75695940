// Options that several commands share.
#pragma once

#include "app/job/FrameSelection.h"
#include "app/job/RenderRequest.h"
#include "app/job/VideoJob.h"
#include "cli/Arguments.h"

namespace multiscene::cli {

/// TEMPLATE, and where `takesGroupFile` a scene-group file too.
void declareSource(Arguments& arguments, RenderRequest& request, bool takesGroupFile);
/// --text, --photo, --video, --video-volume, --media.
void declareInputs(Arguments& arguments, RenderRequest& request);
/// --size, --fps.
void declareFormat(Arguments& arguments, RenderRequest& request, Occurs occurs = Occurs::AtMostOnce);
/// --fit.
void declareFit(Arguments& arguments, RenderRequest& request);
/// --renderer.
void declareRenderer(Arguments& arguments, RenderRequest& request);
/// --strict, --force.
void declareJudgement(Arguments& arguments, RenderRequest& request);
/// --music and how it is played.
void declareMusic(Arguments& arguments, RenderRequest& request);
/// declareMusic(), --loudness, --bitrate, --preset, -o.
void declareVideo(Arguments& arguments, VideoRequest& request);
/// --at, --every.
void declareSelection(Arguments& arguments, FrameSelection& selection);

}  // namespace multiscene::cli
