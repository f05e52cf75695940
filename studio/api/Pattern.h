#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace multiscene::studio {

/// A route's path: "/api/v1/previews/{id}/frames/{n}.jpg". A value is letters, digits, "-", "_" and ".", not
/// at its beginning: never a way to another folder.
class Pattern {
  public:
    using Values = std::map<std::string, std::string, std::less<>>;

    explicit Pattern(const std::string& text);

    /// Of the parts of a request's path; nothing when they are others.
    std::optional<Values> match(const std::vector<std::string>& path) const;
    /// The fewer the closer: "/sessions/current" comes before "/sessions/{id}".
    size_t values() const { return values_; }

  private:
    struct Part {
        std::string before, name, after;  ///< without a name: `before` is all
    };

    std::vector<Part> parts_;
    size_t values_ = 0;
};

}  // namespace multiscene::studio
