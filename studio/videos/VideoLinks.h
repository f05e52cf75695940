#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace multiscene::studio {

/// Links that let whoever has one fetch a video until a time, and nothing else. Who has the key makes them; a
/// new key makes all of them void.
class VideoLinks {
  public:
    /// Reads the key, or makes one. Throws platform::Error.
    explicit VideoLinks(const std::filesystem::path& keyFile);

    /// `expires`: milliseconds since 1970.
    std::string token(const std::string& video, int64_t expires) const;
    /// The video of a token that is one and still good.
    std::optional<std::string> videoOf(std::string_view token, int64_t now) const;

  private:
    std::string signature(std::string_view what) const;

    std::string key_;
};

}  // namespace multiscene::studio
