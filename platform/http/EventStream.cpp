#include "platform/http/EventStream.h"

#include <string_view>

#include "platform/base/Error.h"
#include "platform/http/Connection.h"
#include "platform/http/StreamState.h"

namespace platform::http {

namespace {

void addField(std::string& text, std::string_view name, std::string_view value) {
    if (value.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos)
        throw Error(ErrorKind::Failed, "the name or id of an event is not one line");
    text.append(name).append(": ").append(value).append("\n");
}

void addData(std::string& text, std::string_view data) {
    for (;;) {
        const size_t end = data.find_first_of("\r\n");
        text.append("data: ").append(data.substr(0, end)).append("\n");
        if (end == std::string_view::npos) return;
        data.remove_prefix(end + (data.substr(end).starts_with("\r\n") ? 2 : 1));
    }
}

std::string textOf(const Event& event) {
    std::string text;
    if (event.retry) addField(text, "retry", std::to_string(event.retry->count()));
    if (!event.id.empty()) addField(text, "id", event.id);
    if (!event.name.empty()) addField(text, "event", event.name);
    addData(text, event.data);
    return text + "\n";
}

}  // namespace

bool EventStream::send(const Event& event) const { return state_ && state_->send(event); }
void EventStream::close() const {
    if (state_) state_->close();
}
bool EventStream::isOpen() const { return state_ && state_->isOpen(); }
void EventStream::onClosed(std::function<void()> call) const {
    if (state_)
        state_->onClosed(std::move(call));
    else
        call();
}

bool StreamState::send(const Event& event) {
    std::string text = textOf(event);
    if (!isOpen()) return false;
    if ((waiting_ += text.size()) > mostBytes_) {
        loop_->post([connection = connection_] {
            if (const auto alive = connection.lock()) alive->close();
        });
        return false;
    }
    loop_->post([connection = connection_, text = std::move(text)] {
        if (const auto alive = connection.lock()) alive->streamOut(text);
    });
    return true;
}

void StreamState::close() {
    loop_->post([connection = connection_] {
        if (const auto alive = connection.lock()) alive->endStream();
    });
}

}  // namespace platform::http
