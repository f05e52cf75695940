#include "playback/PicturesAhead.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

namespace multiscene {

namespace {

/// What waits to be taken; one more may be in the making. A photo of a full frame of 1920x1080 takes 8 MB.
constexpr size_t kMostWaitingBytes = 24u << 20;

}  // namespace

PicturesAhead::~PicturesAhead() {
    {
        const std::lock_guard lock(mutex_);
        isOver_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

void PicturesAhead::expect(std::weak_ptr<const void> scene, std::string name, Make make) {
    const std::lock_guard lock(mutex_);
    expected_.push_back({.scene = std::move(scene), .name = std::move(name), .make = std::move(make)});
    if (!thread_.joinable()) start();
    changed_.notify_all();
}

/// Where there is no thread to be had, everybody makes his own.
void PicturesAhead::start() {
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error&) {
    }
}

PictureOnCanvas PicturesAhead::take(const std::string& name, const Make& make) {
    std::unique_lock lock(mutex_);
    const auto found = std::ranges::find(expected_, name, &Expected::name);
    if (found != expected_.end() && found->state != State::Waiting) {
        found->name.clear();  // whoever asks next asks for another one
        changed_.wait(lock, [&] { return found->state == State::Made; });
        Expected made = std::move(*found);
        expected_.erase(found);
        changed_.notify_all();
        if (!made.picture.bitmap.isEmpty()) return std::move(made.picture);
    } else if (found != expected_.end()) {
        expected_.erase(found);
    }
    lock.unlock();
    return make(gate_);
}

/// Empty when it cannot be made as it would be by who takes it.
PictureOnCanvas PicturesAhead::tried(const Make& make) const {
    platform::FileGate scout;
    scout.allowAllOf(gate_);
    try {
        PictureOnCanvas picture = make(scout);
        return scout.refusals().empty() ? std::move(picture) : PictureOnCanvas{};
    } catch (const std::exception&) {
        return {};
    }
}

PicturesAhead::Expected* PicturesAhead::next() {
    // What somebody waits for has lost its name, and is his whatever became of the scene that expected it.
    std::erase_if(expected_, [](const Expected& each) {
        return each.state != State::Making && !each.name.empty() && each.scene.expired();
    });
    size_t bytes = 0;
    for (const Expected& each : expected_) bytes += each.picture.bitmap.rgba.size();
    const auto found = std::ranges::find(expected_, State::Waiting, &Expected::state);
    return found == expected_.end() || bytes >= kMostWaitingBytes ? nullptr : &*found;
}

void PicturesAhead::run() {
    std::unique_lock lock(mutex_);
    while (true) {
        Expected* begun = nullptr;
        changed_.wait(lock, [&] { return isOver_ || (begun = next()); });
        if (isOver_) return;
        begun->state = State::Making;
        lock.unlock();
        PictureOnCanvas picture = tried(begun->make);
        lock.lock();
        begun->picture = std::move(picture);
        begun->state = State::Made;
        changed_.notify_all();
    }
}

}  // namespace multiscene
