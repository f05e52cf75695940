#pragma once

#include "app/Other/QVDownloadInfoManager.h"
#include "app/job/JobFolder.h"
#include "cli/FencedWork.h"

namespace multiscene::cli {

/// Fetches what the server offers and keeps it as QVDownloadInfoManager::downloadInfo() does: one worker
/// talks to the server, another one, without a network, judges what came.
void fetchServerList(FencedWork& fenced, const JobFolder& job, const QVDownloadInfoManager& list);

/// For a worker that reads the kept list.
platform::Reach reachOfServerList(const QVDownloadInfoManager& list);

}  // namespace multiscene::cli
