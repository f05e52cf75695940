// What pages hear without asking: of their own session, or of one job.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/DispatchQueue.h"
#include "platform/base/Value.h"
#include "platform/http/EventStream.h"

namespace multiscene::studio {

/// Keeps the last events, so that a page that was away for a moment hears what it has missed. An event says
/// all of what it is about, so that who misses one loses nothing. Studio queue.
class EventHub {
  public:
    explicit EventHub(platform::DispatchQueue& queue);

    struct About {
        std::string session;
        std::string job = {};       ///< empty: none
        std::string language = {};  ///< of a listener: what problems are said in
    };
    void tell(const About& about, const std::string& name, const platform::Value& data);

    /// Sends what follows after `lastId`, the id of an event (empty: nothing was heard yet) and from then on
    /// all that is told; where that is not known any more, `snapshot` is to give the data of "job" events
    /// that say all.
    void listen(const About& about, const std::string& lastId, platform::http::EventStream stream,
                const std::function<platform::Value::Array()>& snapshot);

    /// Ends the streams of a session.
    void end(const std::string& session);
    /// Ends all streams.
    void stop();
    std::size_t listeners() const { return listeners_.size(); }

  private:
    struct Event {
        uint64_t number;
        About about;
        std::string name, data;
        platform::Value failed =
            {};  ///< the same of one with a problem, which is said in the listener's language
    };
    struct Listener {
        uint64_t number;
        About about;
        platform::http::EventStream stream;
    };

    std::string idOf(uint64_t number) const { return start_ + "-" + std::to_string(number); }
    /// None: an event of another start of the program, or one that was forgotten.
    std::optional<uint64_t> numberOf(const std::string& id) const;
    std::vector<Event> missed(const About& about, const std::string& lastId,
                              const std::function<platform::Value::Array()>& snapshot) const;
    Event eventOf(const About& about, const std::string& name, const platform::Value& data) const;
    bool send(const Listener& listener, const Event& event) const;

    platform::DispatchQueue& queue_;
    const std::string start_;  ///< of this start of the program
    std::deque<Event> ring_;
    uint64_t lastEvent_ = 0, lastListener_ = 0;
    std::list<Listener> listeners_;
};

}  // namespace multiscene::studio
