#include "studio/store/Sweep.h"

#include <system_error>
#include <vector>

#include "platform/base/Log.h"

namespace multiscene::studio {

namespace fs = std::filesystem;

void removeQuietly(const fs::path& path) {
    std::error_code failure;
    fs::remove_all(path, failure);
    if (failure) platform::log::info(path.string() + " cannot be removed: " + failure.message());
}

namespace {

bool isOlder(const fs::path& path, std::chrono::seconds age) {
    std::error_code failure;
    const auto changed = fs::last_write_time(path, failure);
    return age.count() == 0 || (!failure && fs::file_time_type::clock::now() - changed >= age);
}

}  // namespace

void removeUnknown(const fs::path& folder, const std::function<bool(const std::string&)>& isKnown,
                   std::chrono::seconds age) {
    std::error_code failure;
    std::vector<fs::path> unknown;
    for (auto entry = fs::directory_iterator(folder, failure); !failure && entry != fs::end(entry);
         entry.increment(failure))
        if (!isKnown(entry->path().filename().string()) && isOlder(entry->path(), age))
            unknown.push_back(entry->path());
    for (const fs::path& path : unknown) removeQuietly(path);
}

}  // namespace multiscene::studio
