#include "platform/fence/Message.h"

#include <charconv>
#include <cstdio>

namespace platform {

namespace {

template <typename Number>
Number parsed(const std::string& text) {
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

ErrorKind kindOf(int64_t code) {
    for (const ErrorKind kind : {ErrorKind::Usage, ErrorKind::Template, ErrorKind::Input,
                                 ErrorKind::Transient, ErrorKind::Cancelled})
        if (static_cast<int64_t>(kind) == code) return kind;
    return ErrorKind::Failed;
}

/// The end of a long text goes: a message has to stay within its size.
std::string shortened(const std::string& text) {
    constexpr size_t most = Message::maxBytes / 4;
    return text.substr(0, most);
}

}  // namespace

const std::string& Message::field(size_t index) const {
    static const std::string none;
    return index < fields.size() ? fields[index] : none;
}

int64_t Message::integer(size_t index) const { return parsed<int64_t>(field(index)); }

double Message::number(size_t index) const { return parsed<double>(field(index)); }

Message Message::of(Kind kind, const Error& error) {
    return make(kind, {std::to_string(error.exitCode()), shortened(error.message()), shortened(error.file()),
                       shortened(error.key())});
}

Error Message::error() const { return Error(kindOf(integer(0)), field(1), field(2), field(3)); }

std::string fieldOf(double number) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", number);
    return text;
}

}  // namespace platform
