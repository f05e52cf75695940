#include "other/SceneCatalogue.h"

#include <mutex>

namespace multiscene {

namespace {

struct SharedCatalogue {
    std::mutex mutex;
    std::shared_ptr<SceneCatalogue> catalogue;
};

SharedCatalogue& storage() {
    static SharedCatalogue shared;
    return shared;
}

}  // namespace

std::shared_ptr<SceneCatalogue> SceneCatalogue::shared() {
    const std::lock_guard lock(storage().mutex);
    return storage().catalogue;
}

void SceneCatalogue::setShared(std::shared_ptr<SceneCatalogue> catalogue) {
    const std::lock_guard lock(storage().mutex);
    storage().catalogue.swap(catalogue);
}

}  // namespace multiscene
