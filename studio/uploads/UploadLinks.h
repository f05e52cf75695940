#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace multiscene::studio {

/// Links that let whoever has one send a single file, of no more than so many bytes, until a time. Any
/// thread.
class UploadLinks {
  public:
    /// What a link allows.
    struct Grant {
        std::string session, upload;  ///< whose it becomes, and how it will be called
        int64_t expires = 0;          ///< milliseconds since 1970
        uint64_t mostBytes = 0;
    };

    /// Reads the key, or makes one. Throws platform::Error.
    explicit UploadLinks(const std::filesystem::path& keyFile);

    std::string token(const Grant& grant) const;
    /// Of a token that is one and still good.
    std::optional<Grant> grantOf(std::string_view token, int64_t now) const;

  private:
    std::string signature(std::string_view what) const;

    std::string key_;
};

}  // namespace multiscene::studio
