#pragma once

#include "studio/Parts.h"
#include "studio/events/EventHub.h"
#include "studio/jobs/JobQueue.h"
#include "studio/jobs/JobStore.h"
#include "studio/jobs/TemplateFacts.h"
#include "studio/metrics/Counters.h"
#include "studio/uploads/UploadStore.h"
#include "studio/videos/VideoStore.h"

namespace multiscene::studio {

/// What makes videos, from what was sent to what is made: the resources of uploads, jobs, videos and events
/// are windows on it. Studio queue.
struct Workshop {
    Workshop(const Parts& all, FindTemplate find)
        : parts(all),
          findTemplate(std::move(find)),
          events(all.queue),
          jobs(all.database),
          uploads(all.database, all.folders.uploads),
          videos(all.database, all.folders.videos),
          queue(all, {jobs, uploads, videos}, events, counters, findTemplate) {}

    const Parts parts;
    FindTemplate findTemplate;
    EventHub events;
    Counters counters;
    JobStore jobs;
    UploadStore uploads;
    VideoStore videos;
    JobQueue queue;
};

}  // namespace multiscene::studio
