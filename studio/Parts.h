#pragma once

#include "platform/base/DispatchQueue.h"
#include "platform/store/Database.h"
#include "studio/StudioSettings.h"
#include "studio/Timers.h"
#include "studio/access/SessionStore.h"

namespace multiscene::studio {

/// What the studio's resources are made of. All of it outlives them.
struct Parts {
    const StudioSettings& settings;
    const StudioFolders& folders;
    platform::DispatchQueue& queue;  ///< where every handler, store and timer runs
    Timers& timers;
    platform::Database& database;  ///< studio queue; each store makes its own tables
    SessionStore& sessions;
};

}  // namespace multiscene::studio
