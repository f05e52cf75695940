#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// What the header lines of the latest response say. A redirect's lines are forgotten when the next response
/// starts.
struct HttpResponse {
    int status = 0;
    std::string etag, lastModified;
    std::optional<uint64_t> contentLength, rangeStart, rangeTotal;

    void readHeaderLine(std::string_view line);

    /// What names this version of the file in an "If-Range" line; empty when nothing does.
    std::string validator() const;
    /// As far as both say; false when they name different versions of the file.
    bool isOfSameVersion(const HttpResponse& other) const;
};

}  // namespace platform
