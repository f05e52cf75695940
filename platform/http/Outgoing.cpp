#include "platform/http/Outgoing.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <utility>

#include "platform/http/Range.h"
#include "platform/http/Status.h"

namespace platform::http {

namespace {

constexpr uint64_t sliceBytes = 64 << 10;

void addLine(std::string& head, std::string_view name, std::string_view value) {
    head.append(name).append(": ").append(value).append("\r\n");
}

std::string dateNow() {
    constexpr std::array days = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr std::array months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    ::gmtime_r(&now, &utc);
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%s, %02d %s %d %02d:%02d:%02d GMT",
                  days[static_cast<size_t>(utc.tm_wday)], utc.tm_mday,
                  months[static_cast<size_t>(utc.tm_mon)], utc.tm_year + 1900, utc.tm_hour, utc.tm_min,
                  utc.tm_sec);
    return text.data();
}

/// The date, and what no answer goes without.
std::string headBegin(int status) {
    std::string head = "HTTP/1.1 " + std::to_string(status) + " ";
    head.append(statusText(status)).append("\r\n");
    addLine(head, "Date", dateNow());
    addLine(head, "X-Content-Type-Options", "nosniff");
    addLine(head, "Referrer-Policy", "no-referrer");
    addLine(head, "X-Frame-Options", "DENY");
    // One of an answer's own holds beside it.
    addLine(head, "Content-Security-Policy", "frame-ancestors 'none'");
    addLine(head, "Cross-Origin-Resource-Policy", "same-origin");
    return head;
}

/// Whether one of the tags in an If-None-Match line is this, weak or not.
bool isAmongTags(std::string_view list, std::string_view tag) {
    constexpr std::string_view weak = "W/";
    if (tag.starts_with(weak)) tag.remove_prefix(weak.size());
    while (!list.empty()) {
        const size_t end = std::min(list.find(','), list.size());
        std::string_view each = list.substr(0, end);
        list.remove_prefix(std::min(end + 1, list.size()));
        while (each.starts_with(' ')) each.remove_prefix(1);
        while (each.ends_with(' ')) each.remove_suffix(1);
        if (each.starts_with(weak)) each.remove_prefix(weak.size());
        if (each == "*" || each == tag) return true;
    }
    return false;
}

bool isUnchanged(const RequestHead& request, const Answer& answer) {
    const std::string tag = answer.field("ETag");
    return (request.method == "GET" || request.method == "HEAD") && answer.status() == 200 && !tag.empty() &&
           isAmongTags(request.header("If-None-Match"), tag);
}

Range wantedRange(const RequestHead& request, const Answer& answer) {
    if (request.method != "GET" || answer.status() != 200 || !answer.isFile()) return {};
    const std::string condition = request.header("If-Range"), tag = answer.field("ETag");
    // What was begun goes on only with the very same bytes.
    if (!condition.empty() && (condition != tag || tag.starts_with("W/"))) return {};
    return readRange(request.header("Range"), answer.size());
}

std::string rangeText(const Range& range, uint64_t size) {
    const std::string part =
        range.kind == Range::Kind::Part
            ? std::to_string(range.first) + "-" + std::to_string(range.first + range.length - 1)
            : "*";
    return "bytes " + part + "/" + std::to_string(size);
}

}  // namespace

Outgoing::Outgoing(Answer answer, const RequestHead* request, bool endsConnection)
    : answer_(std::move(answer)) {
    const bool unchanged = request && isUnchanged(*request, answer_);
    const Range range = request && !unchanged ? wantedRange(*request, answer_) : Range{};
    int status = answer_.status();
    left_ = answer_.size();
    if (unchanged) status = 304;
    if (range.kind == Range::Kind::Part) status = 206, at_ = range.first, left_ = range.length;
    if (range.kind == Range::Kind::Unsatisfiable) status = 416, left_ = 0;
    const bool hasNone = status == 204 || status == 304;
    if (hasNone) left_ = 0;

    front_ = headBegin(status);
    if (answer_.field("Cache-Control").empty()) addLine(front_, "Cache-Control", "no-store");
    for (const Field& each : answer_.fields()) addLine(front_, each.name, each.value);
    if (answer_.isFile()) addLine(front_, "Accept-Ranges", "bytes");
    if (range.kind != Range::Kind::Whole) addLine(front_, "Content-Range", rangeText(range, answer_.size()));
    if (!hasNone) addLine(front_, "Content-Length", std::to_string(left_));
    if (endsConnection) addLine(front_, "Connection", "close");
    front_ += "\r\n";

    if (request && request->method == "HEAD") left_ = 0;
    if (!answer_.isFile() && left_ <= sliceBytes) front_.append(answer_.body(), at_, std::exchange(left_, 0));
}

Outgoing Outgoing::streamHead() {
    std::string head = headBegin(200);
    addLine(head, "Cache-Control", "no-store");
    addLine(head, "Content-Type", "text/event-stream; charset=utf-8");
    // Some proxies gather what comes in small pieces.
    addLine(head, "X-Accel-Buffering", "no");
    addLine(head, "Connection", "close");
    return Outgoing(head + "\r\n");
}

std::string_view Outgoing::next() {
    if (!std::exchange(frontIsOut_, true)) return front_;
    if (left_ == 0) return {};
    if (answer_.isFile()) return nextOfFile();
    const auto slice = std::string_view(answer_.body()).substr(at_, std::min(left_, sliceBytes));
    at_ += slice.size(), left_ -= slice.size();
    return slice;
}

std::string_view Outgoing::nextOfFile() {
    front_.resize(std::min(left_, sliceBytes));
    const int64_t count = readAt(answer_.file(), front_.data(), front_.size(), at_);
    if (count < 0) throw errnoError(errno, "cannot read", answer_.file().name());
    if (static_cast<uint64_t>(count) < front_.size())
        throw Error(ErrorKind::Failed, "became shorter while it was sent", answer_.file().name());
    at_ += front_.size(), left_ -= front_.size();
    return front_;
}

}  // namespace platform::http
