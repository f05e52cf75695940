#include "platform/http/Answer.h"

#include <algorithm>

namespace platform::http {

namespace {

bool isToken(std::string_view name) {
    constexpr std::string_view signs = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::all_of(name.begin(), name.end(), [&](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               signs.find(c) != std::string_view::npos;
    });
}

bool isOneLine(std::string_view value) {
    return std::all_of(value.begin(), value.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte == '\t' || (byte >= 0x20 && byte != 0x7f);
    });
}

bool isServers(std::string_view name) {
    constexpr std::string_view own[] = {"Content-Length", "Transfer-Encoding", "Connection", "Date",
                                        "Content-Range"};
    return std::any_of(std::begin(own), std::end(own), [&](auto each) { return sameToken(each, name); });
}

}  // namespace

Answer Answer::text(int status, std::string body, const std::string& contentType) {
    Answer answer(status);
    answer.body_ = std::move(body);
    return std::move(answer).with("Content-Type", contentType);
}

Answer Answer::ofFile(FileHandle file, const std::string& contentType) {
    Answer answer(200);
    answer.fileSize_ = file.size();
    answer.file_ = std::make_shared<const FileHandle>(std::move(file));
    return std::move(answer).with("Content-Type", contentType);
}

Answer& Answer::with(const std::string& name, const std::string& value) & {
    if (!isToken(name) || !isOneLine(value) || isServers(name))
        throw Error(ErrorKind::Failed, "not a header line of an answer", {}, name);
    const auto isSame = [&](const Field& each) { return sameToken(each.name, name); };
    if (!sameToken(name, "Set-Cookie")) std::erase_if(fields_, isSame);
    fields_.push_back({name, value});
    return *this;
}

Answer&& Answer::with(const std::string& name, const std::string& value) && {
    return std::move(this->with(name, value));
}

std::string Answer::field(std::string_view name) const {
    for (const Field& each : fields_)
        if (sameToken(each.name, name)) return each.value;
    return {};
}

}  // namespace platform::http
