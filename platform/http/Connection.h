#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "platform/http/Handler.h"
#include "platform/http/Outgoing.h"
#include "platform/http/Pace.h"
#include "platform/http/RequestReader.h"
#include "platform/http/Sockets.h"

namespace platform::http {

class Exchange;
class Service;
class StreamState;

/// One client: its requests, one after the other, and what it is answered. The server's thread. Held by its
/// service and by what its socket has under way, until it is closed.
class Connection : public std::enable_shared_from_this<Connection> {
  public:
    using Time = std::chrono::steady_clock::time_point;

    Connection(std::shared_ptr<Service> service, std::unique_ptr<Socket> socket, std::string group);
    ~Connection();

    void start();
    /// Ends what has lasted too long.
    void sweep(Time now);
    /// Ends after what is under way.
    void stop();
    /// Ends at once.
    void close();

    const std::string& group() const { return group_; }
    /// Nothing was asked yet, or not wholly, or all is answered.
    bool isIdle() const {
        return state_ == State::Greeting || state_ == State::Head || state_ == State::Lingering;
    }
    Time idleSince() const { return idleSince_; }

    /// What the handler's request is answered with.
    void answer(Answer answer);
    void answerFailure(int status, const std::string& reason);
    void startStream(std::shared_ptr<StreamState> stream);
    void streamOut(const std::string& text);  ///< an event
    void endStream();

  private:
    enum class State { Greeting, Head, Body, Handling, Answering, Streaming, Lingering, Closed };

    void awaitRequest(std::chrono::milliseconds patience);
    void read();
    void received(std::size_t bytes);
    void inputEnded();
    void linger(std::size_t bytes);
    void process();
    bool takeHead();
    bool takeBody();
    void decideBody();
    void take(const NoBody&);
    void take(const BodyInMemory& body);
    void take(const BodyInFile& body);
    void take(Answer& answer);
    void startBody(uint64_t mostBytes);
    void handle();
    void refuse(int status, const std::string& reason);
    void streamOut(const std::string& text, std::size_t counted);
    void reply(Answer answer, bool isLast);
    void tellAnswered(int status, uint64_t bytes);
    void pump();
    bool nextSlice();
    void sent(std::size_t bytes);
    void allSent();
    void finish();
    void releaseStream();

    const std::shared_ptr<Service> service_;
    const std::unique_ptr<Socket> socket_;
    const std::string group_;

    State state_ = State::Greeting;
    Time deadline_, idleSince_;  ///< of the states that have one
    Time askedAt_;               ///< when the head began
    bool headBegan_ = false, isKept_ = false;
    Pace pace_;

    std::vector<char> room_;  ///< what is being read into
    std::string input_;       ///< read, from taken_ on not yet taken
    std::size_t taken_ = 0;
    uint64_t receivedBytes_ = 0;
    bool isReading_ = false, inputEnded_ = false;

    std::unique_ptr<RequestReader> reader_;
    Request request_;
    RequestHead answered_;  ///< the head that the answer has to fit
    bool hasHead_ = false;
    std::shared_ptr<Exchange> exchange_;

    struct Piece {
        Outgoing bytes;
        std::size_t ofStream = 0;  ///< bytes that are events
    };
    std::deque<Piece> output_;
    std::string_view slice_;  ///< of the front of the output
    bool isWriting_ = false, isLast_ = false;

    std::shared_ptr<StreamState> stream_;
    Time streamedAt_;
    std::size_t lingered_ = 0;
};

}  // namespace platform::http
