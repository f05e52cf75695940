#include "FaultyServer.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace platform::test {

namespace {

std::string readHead(int connection) {
    std::string head;
    char buffer[4096];
    while (head.find("\r\n\r\n") == std::string::npos) {
        const ssize_t count = ::recv(connection, buffer, sizeof buffer, 0);
        if (count <= 0) break;
        head.append(buffer, static_cast<size_t>(count));
    }
    return head;
}

void waitForEnd(int connection) {
    char byte;
    while (::recv(connection, &byte, 1, 0) > 0) {
    }
}

void drip(int connection, const FaultyAnswer& answer) {
    for (const char byte : answer.bytes) {
        if (::send(connection, &byte, 1, MSG_NOSIGNAL) != 1) return;
        std::this_thread::sleep_for(std::chrono::microseconds(1'000'000 / answer.bytesPerSecond));
    }
}

}  // namespace

FaultyServer::FaultyServer(std::vector<FaultyAnswer> answers) : answers_(std::move(answers)) {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::listen(listener_, 16) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        throw std::runtime_error("no loopback socket");
    port_ = ntohs(address.sin_port);
    thread_ = std::thread([this] { serve(); });
}

FaultyServer::~FaultyServer() {
    ::shutdown(listener_, SHUT_RDWR);
    thread_.join();
    ::close(listener_);
}

std::string FaultyServer::url(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + path;
}

void FaultyServer::serve() {
    for (const FaultyAnswer& answer : answers_) {
        const int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) return;
        requests_.push_back(readHead(connection));
        if (answer.bytesPerSecond > 0)
            drip(connection, answer);
        else
            ::send(connection, answer.bytes.data(), answer.bytes.size(), MSG_NOSIGNAL);
        if (answer.stall) waitForEnd(connection);
        ::shutdown(connection, SHUT_WR);
        waitForEnd(connection);
        ::close(connection);
    }
}

}  // namespace platform::test
