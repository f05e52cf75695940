// studio.db from one version of the program to the next.
#pragma once

#include <string>

#include "platform/store/Database.h"
#include "studio/StudioSettings.h"

namespace multiscene::studio {

/// How long a writer of another program is waited for: everybody's requests wait as long.
constexpr int kDatabasePatienceMs = 2000;

/// What a database of this version has in its user_version. Stores make the tables that are missing as they
/// are now; what an older one has otherwise is changed by a step in StudioDatabase.cpp.
extern const int64_t kDatabaseVersion;

/// At the studio's start, while nobody else has it open: brings it up to this version. A damaged one is set
/// aside in a folder beside it with the videos that it knew of, and what is to be told of that returned; else
/// empty. Throws platform::Error: Failed when a newer version of the program has written it.
std::string prepareDatabase(const StudioFolders& folders);

/// Throws platform::Error: Failed when a newer version of the program has written it.
void requireKnownVersion(platform::Database& database);

}  // namespace multiscene::studio
