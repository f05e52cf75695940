#include "platform/base/LineSocket.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace platform {

std::optional<std::string> LineSocket::readLine(size_t most, bool takesNoMore) {
    for (;;) {
        const size_t end = read_.find('\n', searched_);
        if (end != std::string::npos) {
            std::string line = read_.substr(0, end);
            read_.erase(0, end + 1);
            searched_ = 0;
            return line;
        }
        searched_ = read_.size();
        if (read_.size() > most) throw Error(ErrorKind::Failed, "a line is too long");
        if (!receive(takesNoMore)) return std::nullopt;
    }
}

std::optional<std::string> LineSocket::readBytes(size_t count) {
    searched_ = 0;
    while (read_.size() < count)
        if (!receive(false)) return std::nullopt;
    std::string bytes = read_.substr(0, count);
    read_.erase(0, count);
    return bytes;
}

bool LineSocket::receive(bool takesNoMore) {
    std::array<char, 64 * 1024> bytes;
    for (;;) {
        const ssize_t there = ::recv(descriptor(), bytes.data(), bytes.size(), takesNoMore ? MSG_PEEK : 0);
        if (there < 0 && errno == EINTR) continue;
        if (there <= 0) return false;
        auto count = static_cast<size_t>(there);
        if (takesNoMore) {
            const size_t end = std::string_view(bytes.data(), count).find('\n');
            if (end != std::string_view::npos) count = end + 1;
            if (::recv(descriptor(), bytes.data(), count, 0) != static_cast<ssize_t>(count)) return false;
        }
        read_.append(bytes.data(), count);
        return true;
    }
}

void LineSocket::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(descriptor(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) throw errnoError(errno, "cannot be written", "the connection");
        bytes.remove_prefix(static_cast<size_t>(count));
    }
}

}  // namespace platform
