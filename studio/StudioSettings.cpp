#include "studio/StudioSettings.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/base/File.h"
#include "platform/base/PrivateFolder.h"

namespace multiscene::studio {

namespace fs = std::filesystem;

namespace {

void makePrivate(const fs::path& folder) {
    if (!platform::isFolder(folder)) return platform::makePrivateFolder(folder);
    if (::chmod(folder.c_str(), 0700) != 0)
        throw platform::errnoError(errno, "cannot be made private", folder.string());
}

}  // namespace

StudioFolders::StudioFolders(const fs::path& home)
    : studio(home / "studio"),
      database(studio / "studio.db"),
      uploads(studio / "uploads"),
      videos(studio / "videos"),
      jobs(studio / "jobs"),
      cache(studio / "cache") {}

void StudioFolders::make() const {
    platform::createFolders(studio.parent_path());
    for (const fs::path& folder : {studio, uploads, videos, jobs, cache}) makePrivate(folder);
}

}  // namespace multiscene::studio
