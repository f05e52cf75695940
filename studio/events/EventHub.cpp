#include "studio/events/EventHub.h"

#include <charconv>
#include <chrono>

#include "platform/base/Json.h"
#include "platform/crypto/Secret.h"
#include "studio/api/Problem.h"

namespace multiscene::studio {

namespace {

constexpr size_t kKept = 1000;
constexpr size_t kMostAtOnce = 128 << 10;  // bytes; half of what a stream may be behind
constexpr std::chrono::milliseconds kRetry{2000};

bool concerns(const EventHub::About& event, const EventHub::About& listener) {
    return event.session == listener.session && (listener.job.empty() || event.job == listener.job);
}

}  // namespace

EventHub::EventHub(platform::DispatchQueue& queue) : queue_(queue), start_(platform::randomLetters(6)) {}

void EventHub::tell(const About& about, const std::string& name, const platform::Value& data) {
    ++lastEvent_;
    ring_.push_back(eventOf(about, name, data));
    if (ring_.size() > kKept) ring_.pop_front();
    // A stream that cannot take it is closed, and its page comes back.
    listeners_.remove_if([&](const Listener& listener) { return !send(listener, ring_.back()); });
}

EventHub::Event EventHub::eventOf(const About& about, const std::string& name,
                                  const platform::Value& data) const {
    return {lastEvent_, about, name, platform::jsonText(data),
            data.has("problem") ? data : platform::Value()};
}

bool EventHub::send(const Listener& listener, const Event& event) const {
    if (!concerns(event.about, listener.about)) return listener.stream.isOpen();
    std::string data = event.data;
    if (event.failed)
        data = platform::jsonText(
            event.failed.with("problem", inLanguage(event.failed["problem"], listener.about.language)));
    return listener.stream.send({data, event.name, idOf(event.number), kRetry});
}

std::optional<uint64_t> EventHub::numberOf(const std::string& id) const {
    const std::string begin = start_ + "-";
    uint64_t number = 0;
    if (!id.starts_with(begin)) return std::nullopt;
    const auto read = std::from_chars(id.data() + begin.size(), id.data() + id.size(), number);
    const bool isRead = read.ec == std::errc() && read.ptr == id.data() + id.size();
    const uint64_t forgotten = lastEvent_ - ring_.size();
    return isRead && number >= forgotten && number <= lastEvent_ ? std::optional(number) : std::nullopt;
}

/// No more than a stream takes at once, the newest.
std::vector<EventHub::Event> EventHub::missed(const About& about, const std::string& lastId,
                                              const std::function<platform::Value::Array()>& snapshot) const {
    std::vector<Event> events;
    size_t bytes = 0;
    if (const auto heard = numberOf(lastId)) {
        for (const Event& event : ring_)
            if (event.number > *heard && concerns(event.about, about)) {
                events.push_back(event);
                bytes += event.data.size();
            }
        if (bytes <= kMostAtOnce) return events;
        events.clear();
        bytes = 0;
    }
    const platform::Value::Array jobs = snapshot();
    for (auto job = jobs.rbegin(); job != jobs.rend() && bytes < kMostAtOnce; ++job) {
        events.insert(events.begin(), eventOf(about, "job", *job));
        bytes += events.front().data.size();
    }
    return events;
}

void EventHub::listen(const About& about, const std::string& lastId, platform::http::EventStream stream,
                      const std::function<platform::Value::Array()>& snapshot) {
    const Listener listener{++lastListener_, about, stream};
    for (const Event& event : missed(about, lastId, snapshot))
        if (!send(listener, event)) return;
    listeners_.push_back(listener);
    // The hub ends after the queue has: what is posted finds it.
    stream.onClosed([this, number = listener.number] {
        queue_.async([this, number] {
            listeners_.remove_if([number](const Listener& each) { return each.number == number; });
        });
    });
}

void EventHub::end(const std::string& session) {
    listeners_.remove_if([&](const Listener& listener) {
        if (listener.about.session != session) return false;
        listener.stream.close();
        return true;
    });
}

void EventHub::stop() {
    for (const Listener& listener : listeners_) listener.stream.close();
    listeners_.clear();
}

}  // namespace multiscene::studio
