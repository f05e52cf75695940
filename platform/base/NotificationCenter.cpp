#include "platform/base/NotificationCenter.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace platform {

namespace {

struct Observation {
    std::string name;
    NotificationCenter::Handler handler;
    std::recursive_mutex running;
    bool ended = false;
};

}  // namespace

struct NotificationCenter::Registry {
    std::mutex mutex;
    std::vector<std::shared_ptr<Observation>> observations;
};

NotificationCenter::NotificationCenter() : registry_(std::make_shared<Registry>()) {}

NotificationCenter& NotificationCenter::shared() {
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserver(const std::string& name, Handler handler) {
    auto observation = std::make_shared<Observation>();
    observation->name = name;
    observation->handler = std::move(handler);
    {
        const std::lock_guard lock(registry_->mutex);
        registry_->observations.push_back(observation);
    }
    std::weak_ptr<Registry> weakRegistry = registry_;
    return Token(static_cast<void*>(observation.get()), [weakRegistry, observation](void*) {
        {
            const std::lock_guard lock(observation->running);
            observation->ended = true;
        }
        if (const auto registry = weakRegistry.lock()) {
            const std::lock_guard lock(registry->mutex);
            std::erase(registry->observations, observation);
        }
    });
}

void NotificationCenter::post(const std::string& name) {
    std::vector<std::shared_ptr<Observation>> matching;
    {
        const std::lock_guard lock(registry_->mutex);
        std::copy_if(registry_->observations.begin(), registry_->observations.end(),
                     std::back_inserter(matching),
                     [&](const auto& observation) { return observation->name == name; });
    }
    for (const auto& observation : matching) {
        const std::lock_guard lock(observation->running);
        if (!observation->ended) observation->handler();
    }
}

}  // namespace platform
