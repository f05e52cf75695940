#include "platform/http/Exchange.h"

#include "platform/http/Connection.h"
#include "platform/http/StreamState.h"

namespace platform::http {

void Exchange::answer(Answer answer) {
    if (!claim()) return;
    gone_.setCall({});
    loop_->dispatch([connection = connection_, moved = std::make_shared<Answer>(std::move(answer))] {
        if (const auto alive = connection.lock()) alive->answer(std::move(*moved));
    });
}

EventStream Exchange::stream() {
    if (!claim()) return {};
    gone_.setCall({});
    const auto state = std::make_shared<StreamState>(loop_, connection_, streamBytes_);
    // Never before what follows: events are posted, too.
    loop_->post([connection = connection_, state] {
        if (const auto alive = connection.lock())
            alive->startStream(state);
        else
            state->ended();
    });
    return EventStream(state);
}

void Exchange::fail() {
    if (!claim()) return;
    gone_.setCall({});
    loop_->dispatch([connection = connection_] {
        if (const auto alive = connection.lock()) alive->answerFailure(500, "nothing was answered");
    });
}

void Exchange::onGone(std::function<void()> call) {
    if (!isClaimed_) gone_.setCall(std::move(call));
}

}  // namespace platform::http
