// The same few bytes over and over: what grows with the square of its input, or with its depth, shows here.
#include <map>
#include <string>

#include "platform/text/TextRasterizer.h"
#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

namespace {

constexpr size_t repeatedBytes = 1u << 20, shaderBytes = 60'000;

void playLongText(Bytes bytes) {
    platform::TextLayoutDescription layout;
    layout.text = platform::truncateText(std::string(textOf(bytes)), 0);
    layout.font.size = 12;
    platform::measureText(layout, 100);
}

}  // namespace

/// A letter for the target, then what stands before, what is repeated, and what stands behind, with bytes 1
/// between.
void playRepeated(Bytes bytes) {
    static const std::map<char, void (*)(Bytes)> targets{
        {'p', playPropertyList}, {'t', playCornerPinTrack}, {'s', playShaderText}, {'j', playJson},
        {'h', playHttpHead},     {'n', playNumbers},        {'x', playLongText}};
    if (bytes.empty()) return;
    const auto target = targets.find(static_cast<char>(bytes[0]));
    if (target == targets.end()) return;
    const std::string_view text = textOf(bytes.subspan(1));
    const size_t begin = std::min(text.find('\1'), text.size()),
                 end = std::min(text.find('\1', begin + 1), text.size());
    const std::string_view part = text.substr(begin, end - begin).substr(begin < end ? 1 : 0);
    std::string whole(text.substr(0, begin));
    const size_t most = bytes[0] == 's' ? shaderBytes : repeatedBytes;
    while (!part.empty() && whole.size() < most) whole += part;
    whole += text.substr(std::min(end + 1, text.size()));
    target->second({reinterpret_cast<const uint8_t*>(whole.data()), whole.size()});
}

}  // namespace multiscene::fuzz
