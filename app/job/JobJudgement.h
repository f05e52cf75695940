#pragma once

#include "app/job/JobObserver.h"
#include "app/job/Playable.h"
#include "app/job/RenderRequest.h"

namespace multiscene {

/// Judges what is to be played as `check` does, before anything is drawn, and fills in the group's
/// scenes. Tells the observer what is wrong and throws the first error as platform::Error(Template); a
/// request that is forced goes on unless the engine could not play it at all, one that is strict takes
/// warnings for errors.
void judgeAloud(Playable& playable, const RenderRequest& request, Playback& playback, JobObserver& observer);

}  // namespace multiscene
