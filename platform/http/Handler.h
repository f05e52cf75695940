// What a server's requests are given to.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <variant>

#include "platform/base/PartFile.h"
#include "platform/http/Answer.h"
#include "platform/http/Responder.h"

namespace platform::http {

/// A request with the body that was asked for.
struct Request {
    RequestHead head;
    std::string body;                ///< what was taken into memory
    std::unique_ptr<PartFile> file;  ///< what was taken into a file; gone unless it is published
    uint64_t bodyBytes = 0;
};

/// Which body is taken. A larger one is a 413 before it is read, one of no told length a 411.
struct NoBody {};
struct BodyInMemory {
    uint64_t mostBytes;
};
struct BodyInFile {
    std::filesystem::path file;  ///< the name it is published under; its folder exists
    uint64_t mostBytes;
};
/// Nothing is taken, and this is answered.
using Expectation = std::variant<NoBody, BodyInMemory, BodyInFile, Answer>;

/// Called on the server's thread, where nothing may take long: what does is answered later by the responder.
/// What is thrown is answered by a 500.
class Handler {
  public:
    virtual ~Handler() = default;

    /// Once the head is read, before any of the body.
    virtual Expectation expect(const RequestHead& head) = 0;
    /// Once the body is there. Not called for what expect() answered.
    virtual void handle(Request request, Responder responder) = 0;
    /// A last look at each answer before it goes out, also at the server's own; not at streams. `head` is
    /// empty where none could be read.
    virtual Answer finish(const RequestHead& head, Answer answer);
    /// Once an answer begins to go out, also the server's own and a stream's: of `bytes`, so long after the
    /// request's first byte. `head` is empty where none could be read.
    virtual void answered(const RequestHead& head, int status, uint64_t bytes,
                          std::chrono::microseconds took);
    /// What the server itself answers to what it does not take: a line of text, unless overridden.
    virtual Answer refusal(int status, const std::string& reason);
};

}  // namespace platform::http
