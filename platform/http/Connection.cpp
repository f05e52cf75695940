#include "platform/http/Connection.h"

#include <algorithm>
#include <utility>

#include "platform/base/CurrentError.h"
#include "platform/base/Log.h"
#include "platform/http/Exchange.h"
#include "platform/http/Refusal.h"
#include "platform/http/Service.h"
#include "platform/http/StreamState.h"

namespace platform::http {

namespace {

using Clock = std::chrono::steady_clock;

// Bytes that are read at a time: many connections wait, few send much.
constexpr std::size_t smallRoom = 4 << 10, bodyRoom = 64 << 10;

}  // namespace

Connection::Connection(std::shared_ptr<Service> service, std::unique_ptr<Socket> socket, std::string group)
    : service_(std::move(service)), socket_(std::move(socket)), group_(std::move(group)) {}

Connection::~Connection() = default;

void Connection::start() {
    idleSince_ = Clock::now();
    deadline_ = idleSince_ + service_->limits().headTime;
    socket_->start([self = shared_from_this()](std::size_t moved) {
        if (self->state_ != State::Greeting) return;
        if (moved == 0) return self->close();
        self->state_ = State::Head;
        self->read();
    });
}

void Connection::sweep(Time now) {
    const Limits& limits = service_->limits();
    switch (state_) {
        case State::Greeting:
        case State::Lingering:
            if (now >= deadline_) close();
            break;
        case State::Head:
            if (now < deadline_) break;
            if (headBegan_)
                refuse(408, "the request did not come to its end");
            else
                close();
            break;
        case State::Body:
            if (pace_.isTooSlow(now, receivedBytes_, limits)) refuse(408, "the body came too slowly");
            break;
        case State::Answering:
            if (pace_.isTooSlow(now, socket_->acknowledged(), limits)) close();
            break;
        case State::Streaming:
            if (now - streamedAt_ >= limits.streamPulse && output_.empty()) streamOut(":\n\n", 0);
            break;
        case State::Handling:
        case State::Closed:
            break;
    }
}

void Connection::stop() {
    // There is a reader where a request was not read to its end.
    const bool isOver = state_ == State::Lingering && !reader_;
    if (isOver || state_ == State::Greeting || state_ == State::Head)
        close();
    else if (state_ == State::Streaming)
        endStream();
    else if (state_ == State::Body)
        refuse(503, "the server is ending");
    else
        isLast_ = true;
}

void Connection::close() {
    if (std::exchange(state_, State::Closed) == State::Closed) return;
    const auto self = shared_from_this();
    socket_->close();
    request_ = {};
    reader_.reset();
    if (exchange_) exchange_->clientHasGone();
    exchange_.reset();
    releaseStream();
    service_->remove(self);
}

void Connection::releaseStream() {
    if (!stream_) return;
    service_->streamEnded();
    std::exchange(stream_, nullptr)->ended();
}

void Connection::awaitRequest(std::chrono::milliseconds patience) {
    state_ = State::Head;
    headBegan_ = hasHead_ = false;
    isKept_ = true;
    idleSince_ = Clock::now();
    deadline_ = idleSince_ + patience;
    reader_.reset();
    exchange_.reset();
    process();
}

/// A read is always under way, so that the end of the connection is heard of, unless so much waits already
/// that a client could fill the memory.
void Connection::read() {
    const bool takesAll = state_ == State::Body || state_ == State::Lingering || state_ == State::Streaming;
    const std::size_t most = std::max(service_->limits().readAhead, service_->limits().headBytes + 1);
    const bool isFull = !takesAll && input_.size() - taken_ >= most;
    if (isReading_ || inputEnded_ || isFull || state_ == State::Closed) return;
    room_.resize(state_ == State::Body ? bodyRoom : smallRoom);
    isReading_ = true;
    socket_->read(room_.data(), room_.size(), [self = shared_from_this()](std::size_t bytes) {
        self->isReading_ = false;
        self->received(bytes);
    });
}

void Connection::received(std::size_t bytes) {
    if (state_ == State::Closed) return;
    if (bytes == 0) return inputEnded();
    receivedBytes_ += bytes;
    if (state_ == State::Lingering) return linger(bytes);
    // Nobody answers what is asked after a stream was.
    if (state_ == State::Streaming) return read();
    if (taken_ > 0 && taken_ * 2 >= input_.size()) {
        input_.erase(0, taken_);
        taken_ = 0;
    }
    input_.append(room_.data(), bytes);
    process();
}

/// The client may have closed its side only, and wait for its answer: it gets one if the handler still gives
/// it.
void Connection::inputEnded() {
    inputEnded_ = true;
    if (state_ != State::Handling && state_ != State::Answering) return close();
    if (exchange_) exchange_->clientHasGone();
}

void Connection::linger(std::size_t bytes) {
    lingered_ += bytes;
    if (lingered_ > service_->limits().lingerBytes)
        close();
    else
        read();
}

/// As far as what was read allows.
void Connection::process() {
    try {
        while ((state_ == State::Head && takeHead()) || (state_ == State::Body && takeBody())) {
        }
    } catch (const Refusal& refusal) {
        refuse(refusal.status, refusal.what());
    } catch (...) {
        // The body could not be kept.
        const Error error = currentError();
        log::info("http: " + std::string(error.what()));
        refuse(error.kind() == ErrorKind::Transient ? 507 : 500, "the body cannot be kept");
    }
    if (state_ == State::Head && inputEnded_) return close();
    read();
}

bool Connection::takeHead() {
    const std::string_view bytes = std::string_view(input_).substr(taken_);
    if (bytes.empty()) return false;
    const Limits& limits = service_->limits();
    if (!std::exchange(headBegan_, true)) {
        askedAt_ = Clock::now();
        if (isKept_) deadline_ = askedAt_ + limits.headTime;
    }
    if (!reader_) reader_ = std::make_unique<RequestReader>(limits);
    const std::size_t size = reader_->headSize(bytes);
    if (size == 0) return false;
    request_ = {};
    request_.head = reader_->readHead(bytes.substr(0, size));
    taken_ += size;
    request_.head.peer = socket_->peer();
    request_.head.isSecure = service_->isSecure();
    answered_ = request_.head;
    hasHead_ = true;
    if (!service_->knowsHost(request_.head.host)) throw Refusal(403, "the server has another name");
    decideBody();
    return true;
}

void Connection::decideBody() {
    Expectation expectation = service_->expect(request_.head);
    const bool isUntold = !request_.head.isChunked && !request_.head.contentLength;
    const bool isWanted =
        std::holds_alternative<BodyInMemory>(expectation) || std::holds_alternative<BodyInFile>(expectation);
    if (isWanted && isUntold) throw Refusal(411, "the length of the body is not said");
    std::visit([this](auto& taken) { take(taken); }, expectation);
}

void Connection::take(const NoBody&) {
    if (request_.head.hasBody()) throw Refusal(413, "no body is taken here");
    handle();
}

void Connection::take(const BodyInMemory& body) { startBody(body.mostBytes); }

void Connection::take(const BodyInFile& body) {
    if (request_.head.contentLength.value_or(0) > body.mostBytes) throw Refusal(413, "the body is too large");
    request_.file = std::make_unique<PartFile>(body.file);
    startBody(body.mostBytes);
}

void Connection::take(Answer& answer) { reply(std::move(answer), request_.head.hasBody()); }

void Connection::startBody(uint64_t mostBytes) {
    if (!request_.head.hasBody()) return handle();
    reader_->startBody(request_.head, mostBytes, [this](std::string_view bytes) {
        request_.bodyBytes += bytes.size();
        if (request_.file)
            writeAll(request_.file->file(), bytes, "");
        else
            request_.body += bytes;
    });
    state_ = State::Body;
    pace_.begin(Clock::now(), receivedBytes_);
    if (!request_.head.expectsContinue || taken_ < input_.size()) return;
    output_.push_back({Outgoing("HTTP/1.1 100 Continue\r\n\r\n")});
    pump();
}

bool Connection::takeBody() {
    const std::string_view bytes = std::string_view(input_).substr(taken_);
    const std::size_t used = reader_->putBody(bytes);
    taken_ += used;
    if (reader_->isWhole()) {
        handle();
        return true;
    }
    return used > 0 && taken_ < input_.size();
}

void Connection::handle() {
    state_ = State::Handling;
    reader_.reset();
    exchange_ =
        std::make_shared<Exchange>(service_->loop(), weak_from_this(), service_->limits().streamBytes);
    service_->handle(std::exchange(request_, {}), Responder(exchange_));
}

void Connection::answer(Answer answer) {
    if (state_ == State::Handling) reply(std::move(answer), false);
}

void Connection::answerFailure(int status, const std::string& reason) {
    if (state_ == State::Handling) reply(service_->refusal(status, reason), false);
}

void Connection::refuse(int status, const std::string& reason) {
    reply(service_->refusal(status, reason), true);
}

void Connection::reply(Answer answer, bool isLast) {
    if (state_ == State::Closed) return;
    request_ = {};
    isLast_ = isLast_ || isLast || !hasHead_ || !answered_.keepsAlive || service_->isStopping();
    state_ = State::Answering;
    pace_.begin(Clock::now(), socket_->acknowledged());
    answer = service_->finish(hasHead_ ? answered_ : RequestHead(), std::move(answer));
    tellAnswered(answer.status(), answer.size());
    output_.push_back({Outgoing(std::move(answer), hasHead_ ? &answered_ : nullptr, isLast_)});
    pump();
}

void Connection::tellAnswered(int status, uint64_t bytes) {
    using std::chrono::microseconds;
    const auto took = headBegan_ ? Clock::now() - askedAt_ : Clock::duration::zero();
    service_->answered(hasHead_ ? answered_ : RequestHead(), status, bytes,
                       std::chrono::duration_cast<microseconds>(took));
}

void Connection::startStream(std::shared_ptr<StreamState> stream) {
    if (state_ != State::Handling || !service_->beginStream()) {
        stream->ended();
        return answerFailure(503, "too many pages listen");
    }
    stream_ = std::move(stream);
    if (inputEnded_) return close();
    state_ = State::Streaming;
    isLast_ = true;
    streamedAt_ = Clock::now();
    tellAnswered(200, 0);
    output_.push_back({Outgoing::streamHead()});
    pump();
    if (answered_.method == "HEAD") endStream();
}

void Connection::streamOut(const std::string& text) { streamOut(text, text.size()); }

void Connection::streamOut(const std::string& text, std::size_t counted) {
    if (state_ != State::Streaming) return;
    streamedAt_ = Clock::now();
    // The front may be on its way; what waits behind it waits as one.
    if (output_.size() < 2)
        output_.push_back({Outgoing(text), counted});
    else {
        output_.back().bytes.append(text);
        output_.back().ofStream += counted;
    }
    pump();
}

void Connection::endStream() {
    if (state_ != State::Streaming) return;
    releaseStream();
    state_ = State::Answering;
    pace_.begin(Clock::now(), socket_->acknowledged());
    if (!isWriting_ && output_.empty()) finish();
}

/// One write at a time.
void Connection::pump() {
    if (isWriting_ || state_ == State::Closed) return;
    try {
        if (!nextSlice()) return allSent();
    } catch (...) {
        // The length was said already.
        log::info("http: " + std::string(currentError().what()));
        return close();
    }
    isWriting_ = true;
    socket_->write(slice_, [self = shared_from_this()](std::size_t bytes) {
        self->isWriting_ = false;
        self->sent(bytes);
    });
}

bool Connection::nextSlice() {
    while (slice_.empty() && !output_.empty()) {
        slice_ = output_.front().bytes.next();
        if (!slice_.empty()) break;
        if (stream_) stream_->sent(output_.front().ofStream);
        output_.pop_front();
    }
    return !slice_.empty();
}

void Connection::sent(std::size_t bytes) {
    if (state_ == State::Closed) return;
    if (bytes == 0) return close();
    slice_.remove_prefix(bytes);
    pump();
}

void Connection::allSent() {
    if (state_ != State::Answering) return;
    if (isLast_) return finish();
    awaitRequest(service_->limits().keepAlive);
}

/// Closed at once, with bytes of the client unread, the answer would be lost on its way.
void Connection::finish() {
    state_ = State::Lingering;
    const auto patience = service_->limits().lingerTime;
    deadline_ = Clock::now() + (service_->isStopping() ? patience / 4 : patience);
    if (inputEnded_) return close();
    const bool mayClose = service_->isStopping() && !reader_;
    socket_->finish([self = shared_from_this(), mayClose](std::size_t) {
        if (mayClose) self->close();
    });
    read();
}

}  // namespace platform::http
