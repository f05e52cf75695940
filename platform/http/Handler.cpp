#include "platform/http/Handler.h"

#include "platform/http/Status.h"

namespace platform::http {

Answer Handler::finish(const RequestHead&, Answer answer) { return answer; }

void Handler::answered(const RequestHead&, int, uint64_t, std::chrono::microseconds) {}

Answer Handler::refusal(int status, const std::string& reason) {
    return Answer::text(status, std::string(statusText(status)) + ": " + reason + "\n");
}

}  // namespace platform::http
