// Numbers and short texts: what a value reads as, JSON, HTTP heads, command lines, what a worker says.
#include <sys/socket.h>

#include <cmath>

#include "app/Model/QVUserTextInputModel.h"
#include "app/job/UserText.h"
#include "app/server/UrlText.h"
#include "cli/CommandLine.h"
#include "dataMode/TextSettings.h"
#include "other/QVUtil.h"
#include "platform/base/Json.h"
#include "platform/base/Utf8.h"
#include "platform/base/Value.h"
#include "platform/fence/Channel.h"
#include "platform/fence/WorkerLimits.h"
#include "platform/net/HttpResponse.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Scratch.h"

namespace multiscene::fuzz {

using platform::Value;

void playNumbers(Bytes bytes) {
    const std::string text(textOf(bytes));
    const Value value(text);
    require(std::isfinite(value.doubleValue()) && std::isfinite(value.floatValue()), "a number is finite");
    value.integerValue();
    value.intValue();
    value.boolValue();
    const Value real(value.doubleValue()), whole(value.integerValue());
    require(Value(real.stringValue()).doubleValue() == real.doubleValue(),
            "a number is written as it is read");
    require(Value(whole.stringValue()).integerValue() == whole.integerValue(),
            "a whole number is written as it is read");
    real.integerValue();
    real.floatValue();
    float numbers[4];
    QVUtil::getpagame(text, numbers, 4);
    for (const float number : numbers) require(std::isfinite(number), "a part of a list is finite");
    const std::string path = QVUtil::multiScenePathWithString(text, "/scene/");
    require(path.empty() || path.front() == '/', "a path with a macro is complete");
    require(percentDecoded(percentEncoded(text)) == text, "what is written for a URL is read back");
    templateNameOfUrl(text);
    percentDecoded(text);
    isTaken([&] { platform::WorkerLimits().set(text); });
    const QVUserTextInputModel narrow(Value(Value::Dictionary{{"maxLenght", 8}, {"maxLine", 2}})),
        endless{Value()};
    for (const QVUserTextInputModel* limits : {&narrow, &endless})
        isTaken([&] {
            const AcceptedText accepted = acceptText(text, "key", limits);
            require(accepted.scale > 0 && accepted.scale <= 1, "a text never becomes larger");
        });
}

void playJson(Bytes bytes) {
    isTaken([&] {
        const Value value = platform::parseJson(textOf(bytes), "media.json");
        const std::string written = platform::jsonText(value);
        require(platform::jsonText(platform::parseJson(written, "again")) == written,
                "what is written as JSON is read back");
    });
}

void playHttpHead(Bytes bytes) {
    platform::HttpResponse response;
    std::string_view text = textOf(bytes);
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        response.readHeaderLine(text.substr(0, end));
        response.validator();
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

/// Words are separated by line feeds.
void playCommandLine(Bytes bytes) {
    std::vector<std::string> words{"multiscene"};
    std::string_view text = textOf(bytes);
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        words.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    std::vector<const char*> given;
    for (const std::string& word : words) given.push_back(word.c_str());
    isTaken([&] {
        const auto line = cli::parseCommandLine(static_cast<int>(given.size()), given.data());
        require(line.command || !line.text.empty(), "a command line that is understood asks for something");
    });
}

/// What a worker that has been taken over may send.
void playWorkerMessage(Bytes bytes) {
    int sockets[2];
    require(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets) == 0,
            "a pair of sockets is there");
    platform::FileHandle sender(sockets[0]);
    platform::Channel channel{platform::FileHandle(sockets[1])};
    ::send(sender.descriptor(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    isTaken([&] {
        const auto message = channel.receive();
        if (!message) return;
        require(message->fields.size() <= platform::Message::maxFields, "a message has few fields");
        for (size_t field = 0; field <= message->fields.size(); ++field) {
            message->integer(field);
            message->number(field);
        }
        message->error();
    });
}

}  // namespace multiscene::fuzz
