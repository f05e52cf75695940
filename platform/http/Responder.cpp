#include "platform/http/Responder.h"

#include "platform/http/Exchange.h"

namespace platform::http {

Responder::Responder(std::shared_ptr<Exchange> exchange) : exchange_(std::move(exchange)) {}
Responder::Responder(Responder&&) noexcept = default;

Responder& Responder::operator=(Responder&& other) noexcept {
    if (this != &other) {
        drop();
        exchange_ = std::move(other.exchange_);
    }
    return *this;
}

Responder::~Responder() { drop(); }

void Responder::drop() {
    if (exchange_) exchange_->fail();
    exchange_.reset();
}

void Responder::answer(Answer answer) { exchange_->answer(std::move(answer)); }
EventStream Responder::stream() { return exchange_->stream(); }
bool Responder::isGone() const { return exchange_->isGone(); }
void Responder::onGone(std::function<void()> call) { exchange_->onGone(std::move(call)); }

}  // namespace platform::http
