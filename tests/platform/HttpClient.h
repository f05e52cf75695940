// A client of sockets and bytes, which may say anything to a server.
#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

namespace platform::test {

/// To 127.0.0.1. Gives up what hangs after a minute.
class HttpClient {
  public:
    explicit HttpClient(uint16_t port, int receiveBuffer = 0) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
        const timeval patience{60, 0};
        ::setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        ::setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        const int atOnce = 1;
        ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
        if (receiveBuffer > 0)
            ::setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        isConnected_ = ::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~HttpClient() { ::close(socket_); }
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    bool isConnected() const { return isConnected_; }
    bool send(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count <= 0) return false;
            bytes.remove_prefix(static_cast<size_t>(count));
        }
        return true;
    }
    void endInput() { ::shutdown(socket_, SHUT_WR); }

    /// Up to and with that text; less when the connection ends before.
    std::string readUntil(std::string_view end) {
        size_t at;
        while ((at = read_.find(end)) == std::string::npos)
            if (!readMore()) return std::exchange(read_, {});
        return take(at + end.size());
    }
    /// One answer with its body, by its length.
    std::string readAnswer(bool hasBody = true) {
        std::string answer = readUntil("\r\n\r\n");
        constexpr std::string_view length = "Content-Length: ";
        const size_t at = answer.find(length);
        const size_t wanted =
            at == std::string::npos || !hasBody ? 0 : std::strtoull(&answer[at + length.size()], nullptr, 10);
        while (read_.size() < wanted && readMore()) {
        }
        return answer + take(std::min(wanted, read_.size()));
    }
    std::string readToEnd() {
        while (readMore()) {
        }
        return std::exchange(read_, {});
    }
    /// Takes a little of what has come; false when the connection has ended. Does not wait.
    bool readSome(size_t most) {
        std::string bytes(most, '\0');
        const ssize_t count = ::recv(socket_, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count > 0) read_.append(bytes, 0, static_cast<size_t>(count));
        return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
    }
    /// Whether the connection has ended by now; does not wait.
    bool hasEnded() {
        char bytes[4096];
        ssize_t count;
        while ((count = ::recv(socket_, bytes, sizeof bytes, MSG_DONTWAIT)) > 0)
            read_.append(bytes, static_cast<size_t>(count));
        return count == 0 || (errno != EAGAIN && errno != EINTR);
    }
    const std::string& unread() const { return read_; }

  private:
    bool readMore() {
        char bytes[65536];
        const ssize_t count = ::recv(socket_, bytes, sizeof bytes, 0);
        if (count > 0) read_.append(bytes, static_cast<size_t>(count));
        return count > 0;
    }
    std::string take(size_t count) {
        std::string taken = read_.substr(0, count);
        read_.erase(0, count);
        return taken;
    }

    int socket_;
    bool isConnected_ = false;
    std::string read_;
};

}  // namespace platform::test
