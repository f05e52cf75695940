#include "platform/http/Service.h"

#include <algorithm>
#include <utility>

#include "platform/base/CurrentError.h"
#include "platform/base/Log.h"

namespace platform::http {

namespace {

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return text;
}

/// Where the port begins with its colon; the end when there is none.
size_t portStart(const std::string& host) {
    const size_t colon = host.rfind(':');
    return colon == std::string::npos || host.find(']', colon) != std::string::npos ? host.size() : colon;
}

/// What counts as one address: who has an IPv6 network has all of its addresses.
std::string addressGroup(const std::string& address) {
    size_t end = 0;
    for (int parts = 0; parts < 4 && end != std::string::npos; ++parts) {
        const size_t colon = address.find(':', end);
        if (colon == std::string::npos) return address;
        if (address.compare(colon, 2, "::") == 0) return address.substr(0, colon + 2);
        end = colon + 1;
    }
    return address.substr(0, end);
}

/// Often enough for the shortest of the limits.
std::chrono::milliseconds sweepPeriod(const Limits& limits) {
    using std::chrono::milliseconds;
    const milliseconds shortest = std::min({limits.headTime, limits.keepAlive, limits.rateSpan,
                                            limits.lingerTime, milliseconds(limits.streamPulse)});
    return std::clamp(shortest / 8, milliseconds(10), milliseconds(500));
}

}  // namespace

Service::Service(const ServerOptions& options, uint16_t port, std::shared_ptr<Loop> loop, Handler& handler)
    : limits_(options.limits),
      loop_(std::move(loop)),
      handler_(handler),
      isSecure_(!options.certificateFile.empty()) {
    const std::string usual = isSecure_ ? ":443" : ":80";
    for (std::string host : options.hosts) {
        host = lowerCase(host);
        if (portStart(host) == host.size()) host += ":" + std::to_string(port);
        hosts_.push_back(host);
        // A server behind another one that does TLS is called by that one's port.
        for (const std::string& implied : {usual, std::string(":443")})
            if (host.ends_with(implied)) hosts_.push_back(host.substr(0, portStart(host)));
    }
}

bool Service::knowsHost(const std::string& host) const {
    return std::find(hosts_.begin(), hosts_.end(), lowerCase(host)) != hosts_.end();
}

Expectation Service::expect(const RequestHead& head) {
    try {
        return handler_.expect(head);
    } catch (...) {
        log::info("http: " + std::string(currentError().what()));
        return refusal(500, "the request cannot be taken");
    }
}

void Service::handle(Request request, Responder responder) {
    ++requests_;
    try {
        handler_.handle(std::move(request), std::move(responder));
    } catch (...) {
        log::info("http: " + std::string(currentError().what()));
    }
}

Answer Service::refusal(int status, const std::string& reason) {
    ++refusals_;
    try {
        Answer answer = handler_.refusal(status, reason);
        if (status == 405) answer.with("Allow", "GET, HEAD, POST, PUT, PATCH, DELETE");
        return answer;
    } catch (...) {
        log::info("http: " + std::string(currentError().what()));
        return Answer::text(status, {});
    }
}

Answer Service::finish(const RequestHead& head, Answer answer) {
    try {
        return handler_.finish(head, std::move(answer));
    } catch (...) {
        log::info("http: " + std::string(currentError().what()));
        return Answer::text(500, {});
    }
}

void Service::answered(const RequestHead& head, int status, uint64_t bytes, std::chrono::microseconds took) {
    try {
        handler_.answered(head, status, bytes, took);
    } catch (...) {
        log::info("http: " + std::string(currentError().what()));
    }
}

void Service::add(std::unique_ptr<Socket> socket) {
    const std::string group = addressGroup(socket->peer());
    if (isStopping_ || !makeRoom(group)) {
        ++refusals_;
        return;
    }
    ++perAddress_[group];
    ++count_;
    const auto connection = std::make_shared<Connection>(shared_from_this(), std::move(socket), group);
    connections_.insert(connection);
    connection->start();
    sweepLater();
}

/// Who waits with nothing asked has to go for who comes, so that nobody can keep others out by waiting.
bool Service::makeRoom(const std::string& group) {
    const auto found = perAddress_.find(group);
    const bool isGroupFull = found != perAddress_.end() && found->second >= limits_.connectionsPerAddress;
    if (!isGroupFull && connections_.size() < limits_.connections) return true;
    std::shared_ptr<Connection> longest;
    for (const auto& each : connections_) {
        if (!each->isIdle() || (isGroupFull && each->group() != group)) continue;
        if (!longest || each->idleSince() < longest->idleSince()) longest = each;
    }
    if (!longest) return false;
    longest->close();
    return true;
}

void Service::remove(const std::shared_ptr<Connection>& connection) {
    if (connections_.erase(connection) == 0) return;
    const auto group = perAddress_.find(connection->group());
    if (--group->second == 0) perAddress_.erase(group);
    const std::lock_guard lock(mutex_);
    if (--count_ == 0) emptied_.notify_all();
}

bool Service::beginStream() {
    if (isStopping_ || streams_ >= limits_.streams) return false;
    ++streams_;
    return true;
}

/// Those that end while they are gone through take themselves out of the set.
std::vector<std::shared_ptr<Connection>> Service::everyone() const {
    return {connections_.begin(), connections_.end()};
}

void Service::sweepLater() {
    if (std::exchange(sweeps_, true)) return;
    loop_->after(sweepPeriod(limits_), [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->sweep();
    });
}

void Service::sweep() {
    sweeps_ = false;
    if (!connections_.empty()) sweepLater();
    const auto now = std::chrono::steady_clock::now();
    for (const auto& each : everyone()) each->sweep(now);
}

void Service::stop() {
    isStopping_ = true;
    for (const auto& each : everyone()) each->stop();
}

void Service::closeAll() {
    for (const auto& each : everyone()) each->close();
}

bool Service::waitUntilEmpty(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    return emptied_.wait_for(lock, patience, [&] { return count_ == 0; });
}

ServerCounts Service::counts() const { return {count_, streams_, requests_, refusals_}; }

}  // namespace platform::http
