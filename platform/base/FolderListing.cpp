#include "platform/base/FolderListing.h"

#include "platform/base/Error.h"

namespace platform {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> files;
    std::error_code failure;
    for (auto entry = fs::directory_iterator(folder, failure); !failure && entry != fs::end(entry);
         entry.increment(failure))
        files.push_back(entry->path());
    if (isPassing(failure.value())) throw errnoError(failure.value(), "cannot be read", folder.string());
    return files;
}

}  // namespace platform
