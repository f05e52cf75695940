#include "3DObject/QuadObject3D/TrackFile.h"

#include "platform/base/FileGate.h"
#include "platform/base/Xml.h"
#include "platform/crypto/Cipher.h"

namespace multiscene {

namespace {

const platform::CipherKey& defaultKey() {
    static const platform::CipherKey key = platform::cipherKeyFromText("multiscene corner-pin tracks, 1");
    return key;
}

}  // namespace

std::vector<uint8_t> TrackFile::encryptedAES256DataUsingDefaultKey(const std::vector<uint8_t>& plain,
                                                                   const std::string& name) {
    if (frames(plain).empty())
        throw platform::Error(
            platform::ErrorKind::Template,
            "is no corner-pin track: it needs CornerPinInfoDoc with Object with Frame elements", name);
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

platform::Value::Array TrackFile::read(const std::string& path) {
    const auto opened = platform::FileGate::shared().open(path);
    if (!opened.file) return {};
    try {
        const auto plain =
            decryptedAES256DataUsingDefaultKey(platform::readFile(opened.file, path, maxBytes));
        return plain ? frames(*plain) : platform::Value::Array();
    } catch (const platform::Error&) {
        return {};
    }
}

}  // namespace multiscene
