#include "opengl2.0/ShaderSource.h"

#include <algorithm>
#include <filesystem>

#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"

namespace multiscene {

namespace {

constexpr uint64_t maxFileBytes = 1u << 20;

std::filesystem::path ownShaders() {
    return platform::resourcesFolder() / "shaders";
}

bool isOwn(const std::filesystem::path& file) {
    const std::filesystem::path own = ownShaders().lexically_normal(), normal = file.lexically_normal();
    return std::mismatch(own.begin(), own.end(), normal.begin(), normal.end()).first == own.end();
}

/// The program's own shaders are read as they are; every other file passes the fence.
std::vector<uint8_t> readShaderFile(const std::string& file) {
    if (isOwn(file)) return platform::readFile(file, maxFileBytes);
    const auto opened = platform::FileGate::shared().open(file);
    if (opened.verdict != platform::FileGate::Verdict::Allowed)
        throw platform::Error(platform::ErrorKind::Template, platform::describe(opened.verdict), file);
    return platform::readFile(opened.file, file, maxFileBytes);
}

/// The length of the UTF-8 sequence that starts with this byte; 0 when none does.
size_t sequenceLength(uint8_t first) {
    if (first < 0x80) return 1;
    if (first >= 0xC2 && first < 0xE0) return 2;
    if (first >= 0xE0 && first < 0xF0) return 3;
    return first >= 0xF0 && first < 0xF5 ? 4 : 0;
}

bool isUtf8(const std::vector<uint8_t>& bytes) {
    for (size_t i = 0; i < bytes.size();) {
        const size_t length = sequenceLength(bytes[i]);
        if (length == 0 || length > bytes.size() - i) return false;
        const auto next = bytes.begin() + static_cast<ptrdiff_t>(i);
        if (!std::all_of(next + 1, next + static_cast<ptrdiff_t>(length),
                         [](uint8_t byte) { return (byte & 0xC0) == 0x80; }))
            return false;
        i += length;
    }
    return true;
}

}  // namespace

std::string shaderDescriptionPath(const std::string& file) {
    return std::filesystem::path(file).is_absolute() ? file : (ownShaders() / file).string();
}

platform::Value readShaderDescription(const std::string& file, std::string& problem) {
    try {
        platform::Value description = platform::parsePropertyList(readShaderFile(file), file);
        if (description.isDictionary()) return description;
        problem = "is not a dictionary";
    } catch (const platform::Error& error) {
        problem = error.message();
    }
    return {};
}

std::optional<std::string> readShaderText(const std::string& file, std::string& problem) {
    try {
        const std::vector<uint8_t> bytes = readShaderFile(file);
        if (isUtf8(bytes)) return std::string(bytes.begin(), bytes.end());
        problem = "is not UTF-8 text";
    } catch (const platform::Error& error) {
        problem = error.message();
    }
    return std::nullopt;
}

}  // namespace multiscene
