#include "cli/ServerList.h"

#include "platform/base/Activity.h"
#include "platform/fence/Sandbox.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

void fetchServerList(FencedWork& fenced, const JobFolder& job, const QVDownloadInfoManager& list) {
    const std::filesystem::path file = job.file("list.plist");
    try {
        Errand errand{platform::withoutCredentials(list.serverAddress()), platform::reachOfNetwork(),
                      job.path()};
        fenced.run(errand, [&](Workplace& place) {
            platform::activity::stage("downloading");
            list.downloadInfoTo(file, [stop = place.stop] { return stop.stop_requested(); });
            return 0;
        });
        errand.reach = {};
        fenced.run(errand, [&](Workplace&) {
            platform::activity::stage("reading the server's list");
            list.requireInfo(file);
            return 0;
        });
        list.keepInfo(file);
    } catch (const platform::Error& failure) {
        throw list.withAge(failure);
    }
}

platform::Reach reachOfServerList(const QVDownloadInfoManager& list) {
    platform::Reach reach;
    reach.read.emplace_back(list.saveInfoPath());
    return reach;
}

}  // namespace multiscene::cli
