// What comes in on a server's connection.
#include <algorithm>
#include <optional>
#include <string>

#include "platform/base/Utf8.h"
#include "platform/http/Range.h"
#include "platform/http/Refusal.h"
#include "platform/http/RequestReader.h"
#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

namespace {

using namespace platform::http;

constexpr uint64_t mostBody = 1000;

void requireNames(const RequestHead& head) {
    for (const std::string& name : head.path) {
        require(name != "." && name != "..", "no part of a path leads elsewhere");
        require(name.find_first_of(std::string_view("/\\\0\n", 4)) == std::string::npos, "a part is a name");
        require(platform::firstInvalidUtf8(name) == std::string_view::npos, "a part is UTF-8");
    }
    for (const Field& each : head.query)
        require(each.value.find('\0') == std::string::npos, "no value holds a NUL");
    for (const Field& each : head.fields)
        require((each.name + each.value).find_first_of("\r\n") == std::string::npos, "a header is one line");
    require(!head.isChunked || !head.contentLength, "the end of a body is said in one way");
}

/// One connection, of which so many bytes come at a time.
class Intake {
  public:
    Intake(std::string_view all, size_t step) {
        try {
            for (size_t at = 0; at < all.size(); at += step) {
                waiting_ += all.substr(at, step);
                while (takeHead() || takeBody()) {
                }
            }
        } catch (const Refusal& refusal) {
            require(refusal.status >= 400 && refusal.status < 506, "a refusal has its status");
        }
    }
    /// All requests and bodies that came to their end, in words.
    const std::string& taken() const { return taken_; }

  private:
    bool takeHead() {
        if (isInBody_ || waiting_.empty()) return false;
        if (!reader_) reader_.emplace(limits_);
        const size_t size = reader_->headSize(waiting_);
        if (size == 0) return false;
        const RequestHead head = reader_->readHead(std::string_view(waiting_).substr(0, size));
        waiting_.erase(0, size);
        requireNames(head);
        taken_ += head.method + " " + head.target + (head.keepsAlive ? " " : " last ");
        const Range range = readRange(head.header("Range"), mostBody);
        require(range.kind != Range::Kind::Part ||
                    (range.length > 0 && range.length <= mostBody && range.first <= mostBody - range.length),
                "a range lies in its file");
        isInBody_ = head.hasBody();
        body_.clear();
        if (isInBody_)
            reader_->startBody(head, mostBody, [this](std::string_view bytes) { body_ += bytes; });
        else
            reader_.reset();
        return true;
    }
    bool takeBody() {
        if (!isInBody_) return false;
        const size_t used = reader_->putBody(waiting_);
        waiting_.erase(0, used);
        require(body_.size() <= mostBody, "a body has its limit");
        if (!reader_->isWhole()) return used > 0;
        taken_ += "[" + body_ + "]";
        isInBody_ = false;
        reader_.reset();
        return true;
    }

    const Limits limits_;
    std::optional<RequestReader> reader_;
    std::string waiting_, body_, taken_;
    bool isInBody_ = false;
};

}  // namespace

/// Requests one after the other. However their bytes are cut, they are the same requests.
void playHttpRequest(Bytes bytes) {
    const std::string taken = Intake(textOf(bytes), std::max<size_t>(bytes.size(), 1)).taken();
    for (const size_t step : {1, 7})
        require(Intake(textOf(bytes), step).taken() == taken, "requests do not depend on how they are cut");
}

}  // namespace multiscene::fuzz
