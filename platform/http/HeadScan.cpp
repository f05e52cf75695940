#include "platform/http/HeadScan.h"

#include "platform/http/Refusal.h"

namespace platform::http {

std::size_t HeadScan::size(std::string_view bytes) {
    for (; seen_ < bytes.size(); ++seen_) {
        const char byte = bytes[seen_];
        const bool followsReturn = seen_ > lineStart_ && bytes[seen_ - 1] == '\r';
        if (byte == '\n') {
            if (!followsReturn) throw Refusal(400, "a line ends without a carriage return");
            const std::size_t length = seen_ - 1 - lineStart_;
            if (length == 0 && lines_ > 0) return seen_ + 1;
            endLine(length);
            continue;
        }
        if (followsReturn) throw Refusal(400, "a carriage return stands within a line");
        checkByte(byte, seen_ - lineStart_);
        checkSizes(seen_ - lineStart_);
    }
    return 0;
}

void HeadScan::endLine(std::size_t length) {
    if (length == 0) throw Refusal(400, "a request begins with its request line");
    ++lines_;
    if (lines_ > limits_.headerLines + 1) throw Refusal(431, "too many header lines");
    lineStart_ = seen_ + 1;
}

void HeadScan::checkByte(char byte, std::size_t column) const {
    const auto value = static_cast<unsigned char>(byte);
    if (column == 0 && (byte == ' ' || byte == '\t')) throw Refusal(400, "a line is folded");
    if ((value < 0x20 && byte != '\t' && byte != '\r') || value == 0x7f)
        throw Refusal(400, "a control character stands in the head");
}

void HeadScan::checkSizes(std::size_t lineLength) const {
    if (lines_ == 0 && lineLength > limits_.targetBytes) throw Refusal(414, "the address is too long");
    if (seen_ >= limits_.headBytes) throw Refusal(431, "the header lines are too long");
}

}  // namespace platform::http
