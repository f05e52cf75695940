#include "format/TrackFile.h"

#include <charconv>
#include <cmath>

#include "platform/base/Xml.h"
#include "platform/crypto/Cipher.h"

namespace multiscene {

namespace {

const platform::CipherKey& defaultKey() {
    static const platform::CipherKey key = platform::cipherKeyFromText("multiscene corner-pin tracks, 1");
    return key;
}

bool isNumber(const std::string& text) {
    constexpr const char* blanks = " \t\r\n";
    const size_t start = text.find_first_not_of(blanks), last = text.find_last_not_of(blanks);
    if (start == std::string::npos) return false;
    double number = 0;
    const char* end = text.data() + last + 1;
    const auto result = std::from_chars(text.data() + start, end, number);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(number);
}

}  // namespace

std::vector<uint8_t> TrackFile::encryptedAES256DataUsingDefaultKey(const std::vector<uint8_t>& plain,
                                                                   const std::string& name) {
    if (frames(plain).empty())
        throw platform::Error(
            platform::ErrorKind::Template,
            "is no corner-pin track: it needs CornerPinInfoDoc with Object with Frame elements", name);
    if (const std::string problem = problemOf(frames(plain)); !problem.empty())
        throw platform::Error(platform::ErrorKind::Template, problem, name);
    return platform::encryptAES256(plain, defaultKey());
}

std::optional<std::vector<uint8_t>> TrackFile::decryptedAES256DataUsingDefaultKey(
    const std::vector<uint8_t>& stored) {
    return platform::decryptAES256(stored, defaultKey());
}

platform::Value::Array TrackFile::frames(const std::vector<uint8_t>& plain) {
    const auto document = platform::parseXml(plain);
    if (!document) return {};
    const platform::Value& list = (*document)["CornerPinInfoDoc"]["Object"]["Frame"];
    return list.isDictionary() ? platform::Value::Array{list} : list.array();
}

std::string TrackFile::problemOf(const platform::Value::Array& frames) {
    for (size_t frame = 0; frame < frames.size(); ++frame)
        for (const char* place : {"topleftx", "toplefty", "toprightx", "toprighty", "bottomleftx",
                                  "bottomlefty", "bottomrightx", "bottomrighty"}) {
            const std::string where = "frame " + std::to_string(frame);
            const platform::Value& value = frames[frame][place];
            if (value.isNone()) return where + " has no \"" + place + "\"";
            if (!isNumber(value.stringValue()))
                return where + ": \"" + place + "\" is \"" + value.stringValue() +
                       "\", no number such as 0.5";
        }
    return {};
}

platform::Value::Array TrackFile::read(const std::string& path, platform::FileGate& gate) {
    const auto opened = gate.open(path);
    if (!opened.file) return {};
    try {
        const auto plain =
            decryptedAES256DataUsingDefaultKey(platform::readFile(opened.file, path, maxBytes));
        return plain ? frames(*plain) : platform::Value::Array();
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        return {};
    }
}

}  // namespace multiscene
