#include "platform/fence/Channel.h"

#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace platform {

namespace {

struct Header {
    uint32_t kind, fields;
};

void append(std::string& packet, const void* data, size_t size) {
    packet.append(static_cast<const char*>(data), size);
}

std::string packetOf(const Message& message) {
    std::string packet;
    const Header header{static_cast<uint32_t>(message.kind), static_cast<uint32_t>(message.fields.size())};
    append(packet, &header, sizeof header);
    for (const std::string& field : message.fields) {
        const auto size = static_cast<uint32_t>(field.size());
        append(packet, &size, sizeof size);
        packet += field;
    }
    return packet;
}

/// Takes the bytes of a packet one after the other.
class Reader {
  public:
    Reader(const char* bytes, size_t size) : bytes_(bytes), left_(size) {}

    bool take(void* target, size_t size) {
        if (size > left_) return false;
        std::memcpy(target, bytes_, size);
        bytes_ += size;
        left_ -= size;
        return true;
    }
    bool take(std::string& target) {
        uint32_t size = 0;
        if (!take(&size, sizeof size) || size > left_) return false;
        target.assign(bytes_, size);
        bytes_ += size;
        left_ -= size;
        return true;
    }
    bool isAtEnd() const { return left_ == 0; }

  private:
    const char* bytes_;
    size_t left_;
};

bool parse(const char* bytes, size_t size, Message& message) {
    Reader reader(bytes, size);
    Header header{};
    constexpr auto last = static_cast<uint32_t>(Message::Kind::Plan);
    if (!reader.take(&header, sizeof header) || header.kind < 1 || header.kind > last ||
        header.fields > Message::maxFields)
        return false;
    message.kind = static_cast<Message::Kind>(header.kind);
    message.fields.resize(header.fields);
    for (std::string& field : message.fields)
        if (!reader.take(field)) return false;
    return reader.isAtEnd();
}

union Control {
    char bytes[CMSG_SPACE(sizeof(int) * Message::maxFiles)];
    cmsghdr aligned;
};

void addFiles(msghdr& packet, Control& control, const std::vector<FileHandle>& files) {
    if (files.empty()) return;
    packet.msg_control = control.bytes;
    packet.msg_controllen = CMSG_SPACE(sizeof(int) * files.size());
    cmsghdr* part = CMSG_FIRSTHDR(&packet);
    part->cmsg_level = SOL_SOCKET;
    part->cmsg_type = SCM_RIGHTS;
    part->cmsg_len = CMSG_LEN(sizeof(int) * files.size());
    for (size_t index = 0; index < files.size(); ++index) {
        const int descriptor = files[index].descriptor();
        std::memcpy(CMSG_DATA(part) + index * sizeof descriptor, &descriptor, sizeof descriptor);
    }
}

std::vector<FileHandle> takeFiles(msghdr& packet) {
    std::vector<FileHandle> files;
    for (cmsghdr* part = CMSG_FIRSTHDR(&packet); part; part = CMSG_NXTHDR(&packet, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t index = 0; index < count; ++index) {
            int descriptor = -1;
            std::memcpy(&descriptor, CMSG_DATA(part) + index * sizeof descriptor, sizeof descriptor);
            files.emplace_back(descriptor);
        }
    }
    return files;
}

}  // namespace

std::pair<Channel, Channel> Channel::pair() {
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw errnoError(errno, "cannot make a channel", "");
    return {Channel(FileHandle(ends[0])), Channel(FileHandle(ends[1]))};
}

bool Channel::send(const Message& message) { return sendWith(message, 0); }

bool Channel::sendAtOnce(const Message& message) { return sendWith(message, MSG_DONTWAIT); }

bool Channel::sendWith(const Message& message, int flags) {
    std::string bytes = packetOf(message);
    if (bytes.size() > Message::maxBytes || message.fields.size() > Message::maxFields ||
        message.files.size() > Message::maxFiles)
        throw Error(ErrorKind::Failed, "a message between the processes is too large");
    iovec part{bytes.data(), bytes.size()};
    Control control{};
    msghdr packet{};
    packet.msg_iov = &part;
    packet.msg_iovlen = 1;
    addFiles(packet, control, message.files);
    const std::lock_guard lock(sending_);
    ssize_t sent = -1;
    do sent = ::sendmsg(socket_.descriptor(), &packet, MSG_NOSIGNAL | flags);
    while (sent < 0 && errno == EINTR);
    return sent >= 0;
}

std::optional<Message> Channel::receive(bool waits) {
    char bytes[Message::maxBytes];
    iovec part{bytes, sizeof bytes};
    Control control{};
    msghdr packet{};
    packet.msg_iov = &part;
    packet.msg_iovlen = 1;
    packet.msg_control = control.bytes;
    packet.msg_controllen = sizeof control.bytes;
    ssize_t size = -1;
    // An end that closes with something unread resets the connection; what it said before is heard after
    // that.
    bool wasReset = false;
    do size = ::recvmsg(socket_.descriptor(), &packet, MSG_CMSG_CLOEXEC | (waits ? 0 : MSG_DONTWAIT));
    while (size < 0 && (errno == EINTR || (errno == ECONNRESET && !std::exchange(wasReset, true))));
    if (size < 0 && errno == EAGAIN) return std::nullopt;
    if (size <= 0) {
        isClosed_ = true;
        return std::nullopt;
    }
    Message message;
    message.files = takeFiles(packet);
    const bool isWhole = (packet.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
    if (!isWhole || !parse(bytes, static_cast<size_t>(size), message))
        throw Error(ErrorKind::Failed, "what the worker says cannot be understood");
    return message;
}

}  // namespace platform
