#include "opengl2.0/ShaderSource.h"

#include <algorithm>
#include <filesystem>

#include "platform/base/Limits.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/base/Utf8.h"
#include "platform/gl/ShaderCost.h"

namespace multiscene {

namespace {

std::filesystem::path ownShaders() { return platform::resourcesFolder() / "shaders"; }

/// The program's own shaders are read as they are; every other file passes the fence.
std::vector<uint8_t> readShaderFile(const std::string& file, platform::FileGate& gate) {
    if (isOwnShaderFile(file)) return platform::readFile(file, platform::limitOf("maxShaderBytes"));
    const auto opened = gate.open(file);
    if (opened.verdict != platform::FileGate::Verdict::Allowed)
        throw platform::Error(platform::ErrorKind::Template, platform::describe(opened.verdict), file);
    return platform::readFile(opened.file, file, platform::limitOf("maxShaderBytes"));
}

/// The reason why a template's shader is skipped; throws what is no fault of the template.
std::string skippedFor(const platform::Error& error, const std::string& file) {
    if (isOwnShaderFile(file) || error.kind() == platform::ErrorKind::Transient) throw platform::Error(error);
    return error.message();
}

}  // namespace

bool isOwnShaderFile(const std::string& file) {
    const std::filesystem::path own = ownShaders().lexically_normal(),
                                normal = std::filesystem::path(file).lexically_normal();
    return std::mismatch(own.begin(), own.end(), normal.begin(), normal.end()).first == own.end();
}

std::string shaderDescriptionPath(const std::string& file) {
    return std::filesystem::path(file).is_absolute() ? file : (ownShaders() / file).string();
}

platform::Value readShaderDescription(const std::string& file, platform::FileGate& gate,
                                      std::string& problem) {
    try {
        platform::Value description = platform::parsePropertyList(readShaderFile(file, gate), file);
        if (description.isDictionary()) return description;
        problem = "is not a dictionary";
    } catch (const platform::Error& error) {
        problem = skippedFor(error, file);
    }
    return {};
}

std::optional<std::string> readShaderText(const std::string& file, platform::FileGate& gate,
                                          std::string& problem) {
    try {
        const std::vector<uint8_t> bytes = readShaderFile(file, gate);
        std::string text(bytes.begin(), bytes.end());
        if (platform::firstInvalidUtf8(text) != std::string::npos)
            problem = "is not UTF-8 text";
        else if (!isOwnShaderFile(file))
            problem = platform::shaderTextProblem(text);
        else
            problem.clear();
        if (problem.empty()) return text;
    } catch (const platform::Error& error) {
        problem = skippedFor(error, file);
    }
    return std::nullopt;
}

}  // namespace multiscene
