#include "app/job/UserText.h"

#include <algorithm>
#include <cstdint>

#include "platform/base/Error.h"
#include "platform/base/Utf8.h"
#include "platform/text/TextRasterizer.h"

namespace multiscene {

namespace {

using platform::Error;
using platform::ErrorKind;

std::string withPlainLineEnds(const std::string& text) {
    std::string result;
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n') continue;
        result += text[at] == '\r' ? '\n' : text[at];
    }
    return result;
}

bool isControl(char letter) {
    const auto code = static_cast<unsigned char>(letter);
    return (code < 0x20 && letter != '\n' && letter != '\t') || code == 0x7f;
}

/// Makes a text smaller that has more than there is room for, and says so. Throws when it has so many that
/// nobody could read them.
void judge(int64_t count, int64_t limit, const std::string& what, const std::string& key,
           AcceptedText& text) {
    if (limit < 1 || count <= limit) return;
    const std::string fault = "has " + std::to_string(count) + " " + what + "; the template ";
    if (count > limit * kMostOverLimit)
        throw Error(ErrorKind::Input,
                    "the text " + fault + "takes " + std::to_string(limit) + ", and at most " +
                        std::to_string(limit * kMostOverLimit) + " in smaller letters",
                    "", key);
    text.notes.push_back("\"" + key + "\" " + fault + "has room for " + std::to_string(limit) +
                         ": the letters become smaller");
    text.scale = std::min(text.scale, static_cast<double>(limit) / static_cast<double>(count));
}

}  // namespace

AcceptedText acceptText(const std::string& text, const std::string& key, const QVUserTextInputModel* limits) {
    AcceptedText accepted;
    const std::string& plain = accepted.text = withPlainLineEnds(text);
    if (platform::firstInvalidUtf8(plain) != std::string::npos)
        throw Error(ErrorKind::Input, "the text is not UTF-8", "", key);
    if (std::any_of(plain.begin(), plain.end(), isControl))
        throw Error(ErrorKind::Input, "the text holds control characters", "", key);
    if (!limits) return accepted;
    const int64_t lineEnds = std::count(plain.begin(), plain.end(), '\n');
    judge(platform::countCharacters(plain) - lineEnds, limits->maxLenght(), "characters", key, accepted);
    judge(lineEnds + 1, limits->maxLine(), "lines", key, accepted);
    return accepted;
}

}  // namespace multiscene
