#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"
#include "platform/base/Value.h"

namespace multiscene {

/// Corner-pin tracks: XML files, stored encrypted under the key that the application carries.
class TrackFile {
  public:
    static constexpr uint64_t maxBytes = platform::limitOf("maxTrackBytes");

    /// The stored form of a plain track, always the same for the same track. Throws platform::Error(Template)
    /// when `plain` is no track, or one with a problem.
    static std::vector<uint8_t> encryptedAES256DataUsingDefaultKey(const std::vector<uint8_t>& plain,
                                                                   const std::string& name);
    /// None when the file was not stored under this application's key.
    static std::optional<std::vector<uint8_t>> decryptedAES256DataUsingDefaultKey(
        const std::vector<uint8_t>& stored);

    /// The "Frame" dictionaries of a plain track in order; empty when it is none.
    static platform::Value::Array frames(const std::vector<uint8_t>& plain);
    /// What is wrong with frames that are there: a corner without a place, or with one that is no number;
    /// empty when nothing is.
    static std::string problemOf(const platform::Value::Array& frames);
    /// Opens a stored track through the fence and reads its frames; empty when that fails anywhere.
    static platform::Value::Array read(const std::string& path, platform::FileGate& gate);
};

}  // namespace multiscene
