#include "platform/http/RequestReader.h"

#include <algorithm>
#include <array>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/error.hpp>
#include <limits>

#include "platform/http/Refusal.h"
#include "platform/http/Target.h"

namespace platform::http {

namespace beast = boost::beast::http;
using boost::beast::error_code;
using boost::beast::string_view;

namespace {

constexpr size_t mostChunkHead = 1024;  // bytes: a size and a line end
constexpr size_t leastOfChunks = 5;     // bytes: what is to come until the end, at the least

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

void checkMethod(std::string_view method) {
    constexpr std::array taken = {"GET", "HEAD", "POST", "PUT", "PATCH", "DELETE"};
    constexpr std::array known = {"OPTIONS", "CONNECT", "TRACE"};
    if (std::find(taken.begin(), taken.end(), method) != taken.end()) return;
    if (std::find(known.begin(), known.end(), method) != known.end())
        throw Refusal(405, "the method is not taken");
    throw Refusal(501, "the method is unknown");
}

size_t countOf(const RequestHead& head, std::string_view name) {
    return static_cast<size_t>(std::count_if(head.fields.begin(), head.fields.end(),
                                             [&](const Field& each) { return sameToken(each.name, name); }));
}

/// Where a body ends must be said once and in one way, or two readers may find two ends.
void checkFraming(RequestHead& head, bool isVersion11) {
    const size_t lengths = countOf(head, "Content-Length"), codings = countOf(head, "Transfer-Encoding");
    if (lengths + codings > 1) throw Refusal(400, "the length of the body is said more than once");
    if (codings == 1) {
        if (!isVersion11) throw Refusal(400, "HTTP/1.0 knows no chunks");
        if (!sameToken(head.header("Transfer-Encoding"), "chunked"))
            throw Refusal(501, "the transfer encoding is not taken");
        head.isChunked = true;
    }
    const std::string length = head.header("Content-Length");
    if (lengths == 1 && !isDigits(length)) throw Refusal(400, "the length of the body is no number");
}

void checkHost(RequestHead& head) {
    if (countOf(head, "Host") != 1) throw Refusal(400, "a request has one Host line");
    head.host = head.header("Host");
    if (head.host.empty() || head.host.find_first_of(" \t,/@") != std::string::npos)
        throw Refusal(400, "the Host line names no host");
}

void checkWishes(RequestHead& head) {
    if (countOf(head, "Upgrade") > 0) throw Refusal(501, "there is no other protocol to change to");
    const std::string coding = head.header("Content-Encoding");
    if (!coding.empty() && !sameToken(coding, "identity"))
        throw Refusal(415, "a compressed body is not taken");
    const std::string expected = head.header("Expect");
    if (expected.empty()) return;
    if (!sameToken(expected, "100-continue")) throw Refusal(417, "the expectation is unknown");
    head.expectsContinue = true;
}

[[noreturn]] void refuse(const error_code& code) {
    if (code == beast::error::bad_version) throw Refusal(505, "the version of HTTP is not taken");
    if (code == beast::error::body_limit) throw Refusal(413, "the body is too large");
    if (code == beast::error::header_limit) throw Refusal(431, "the header lines are too long");
    if (code == beast::error::bad_chunk_extension) throw Refusal(400, "chunk extensions are not taken");
    throw Refusal(400, "the request is malformed");
}

}  // namespace

struct RequestReader::Parser : beast::basic_parser<true> {
    explicit Parser(const Limits& limits) {
        header_limit(static_cast<uint32_t>(limits.headBytes + 2));
        body_limit(boost::none);
    }

    RequestHead head;
    bool isVersion11 = false;
    std::string target;
    std::function<void(std::string_view)> sink;

  private:
    void on_request_impl(beast::verb, string_view method, string_view path, int version,
                         error_code&) override {
        head.method = std::string(method);
        target = std::string(path);
        isVersion11 = version == 11;
    }
    void on_response_impl(int, string_view, int, error_code&) override {}
    void on_field_impl(beast::field, string_view name, string_view value, error_code& code) override {
        // A trailer could say something else than the head that was acted upon.
        if (sink)
            code = beast::error::bad_field;
        else
            head.fields.push_back({std::string(name), std::string(value)});
    }
    void on_header_impl(error_code&) override {}
    void on_body_init_impl(const boost::optional<uint64_t>&, error_code&) override {}
    size_t on_body_impl(string_view bytes, error_code&) override { return take(bytes); }
    void on_chunk_header_impl(uint64_t, string_view extensions, error_code& code) override {
        if (!extensions.empty()) code = beast::error::bad_chunk_extension;
    }
    size_t on_chunk_body_impl(uint64_t, string_view bytes, error_code&) override { return take(bytes); }
    void on_finish_impl(error_code&) override {}

    size_t take(string_view bytes) const {
        if (!bytes.empty()) sink({bytes.data(), bytes.size()});
        return bytes.size();
    }
};

RequestReader::RequestReader(const Limits& limits)
    : scan_(limits), parser_(std::make_unique<Parser>(limits)) {}

RequestReader::~RequestReader() = default;

RequestHead RequestReader::readHead(std::string_view bytes) {
    error_code code;
    const size_t used = parser_->put(boost::asio::const_buffer(bytes.data(), bytes.size()), code);
    if (code) refuse(code);
    if (used != bytes.size() || !parser_->is_header_done()) throw Refusal(400, "the request is malformed");
    RequestHead head = std::move(parser_->head);
    checkHost(head);
    checkFraming(head, parser_->isVersion11);
    if (parser_->content_length()) head.contentLength = *parser_->content_length();
    checkMethod(head.method);
    checkWishes(head);
    readTarget(parser_->target, head);
    head.keepsAlive = parser_->isVersion11 && parser_->keep_alive();
    return head;
}

void RequestReader::startBody(const RequestHead& head, uint64_t mostBytes,
                              std::function<void(std::string_view)> sink) {
    if (head.contentLength.value_or(0) > mostBytes) throw Refusal(413, "the body is too large");
    parser_->sink = std::move(sink);
    parser_->body_limit(mostBytes);
    parser_->eager(true);
}

std::size_t RequestReader::putBody(std::string_view bytes) {
    const bool isChunked = parser_->chunked();
    // Fewer bytes of chunks than this the parser takes for a fault of its own, and ends the process.
    const size_t least = isChunked ? leastOfChunks : 1;
    size_t used = 0;
    while (!isWhole() && bytes.size() - used >= least) {
        // However the bytes have come, the size of a chunk is looked for in so many of them.
        const std::string_view part = bytes.substr(used, isChunked ? mostChunkHead : bytes.size());
        error_code code;
        const size_t taken = parser_->put(boost::asio::const_buffer(part.data(), part.size()), code);
        if (code && code != beast::error::need_more) refuse(code);
        if (taken == 0 && part.size() == mostChunkHead) throw Refusal(400, "a chunk's size is too long");
        if (taken == 0) break;
        used += taken;
    }
    return used;
}

bool RequestReader::isWhole() const { return parser_->is_done(); }

}  // namespace platform::http
