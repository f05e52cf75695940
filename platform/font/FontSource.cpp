#include "platform/font/FontSource.h"

#include "platform/base/FileGate.h"
#include "platform/text/FontPath.h"

namespace platform {

namespace {

constexpr uint64_t maxFontBytes = 64u << 20;

std::vector<uint8_t> readFont(const std::string& file) {
    const auto opened = FileGate::shared().open(file);
    if (!opened.file || !isFontFile(opened.file)) return {};
    try {
        return readFile(opened.file, file, maxFontBytes);
    } catch (const Error&) {
        return {};
    }
}

}  // namespace

FontSource findFontSource(const TextFont& font, const std::u32string& letters) {
    FontSource source;
    if (!font.file.empty()) source.bytes = readFont(font.file);
    if (source.bytes.empty()) source.path = installedFontPath(font.name, letters);
    return source;
}

}  // namespace platform
