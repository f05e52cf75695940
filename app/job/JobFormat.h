#pragma once

#include <string>
#include <vector>

#include "app/job/Playable.h"
#include "app/job/RenderRequest.h"

namespace multiscene {

/// Size and rate of the video: the request's, else the template's. Throws platform::Error: Usage when a
/// group file is given without them or a given size is odd, Template when the template's own is.
MediaFormat formatOf(const RenderRequest& request, const Playable& playable);

/// What another rate than the template's does to the length; empty when the rate is the template's.
/// How the template's picture lies in the video; a group file has no shape of its own and fills it.
platform::FrameLayout layoutOf(const RenderRequest& request, const Playable& playable,
                               const MediaFormat& format);

/// What the user should know of a video of another shape; empty when it has the template's.
std::string shapeNote(const RenderRequest& request, const Playable& playable, const MediaFormat& format);

std::string speedNote(const MediaFormat& format, const Playable& playable, int64_t frames);

}  // namespace multiscene
