#include "studio/api/Pattern.h"

#include <algorithm>
#include <sstream>

namespace multiscene::studio {

namespace {

constexpr size_t kMostValueBytes = 128;

bool isValue(const std::string& text) {
    return !text.empty() && text.size() <= kMostValueBytes && text.front() != '.' &&
           std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                      c == '-' || c == '_' || c == '.';
           });
}

}  // namespace

Pattern::Pattern(const std::string& text) {
    std::istringstream stream(text.substr(1));
    for (std::string part; std::getline(stream, part, '/');) {
        const size_t open = part.find('{'), close = part.find('}');
        if (open == std::string::npos) {
            parts_.push_back({part, {}, {}});
            continue;
        }
        parts_.push_back(
            {part.substr(0, open), part.substr(open + 1, close - open - 1), part.substr(close + 1)});
        ++values_;
    }
}

std::optional<Pattern::Values> Pattern::match(const std::vector<std::string>& path) const {
    if (path.size() != parts_.size()) return std::nullopt;
    Values values;
    for (size_t index = 0; index < path.size(); ++index) {
        const Part& part = parts_[index];
        const std::string& given = path[index];
        if (part.name.empty()) {
            if (given != part.before) return std::nullopt;
            continue;
        }
        const size_t around = part.before.size() + part.after.size();
        if (given.size() <= around || !given.starts_with(part.before) || !given.ends_with(part.after))
            return std::nullopt;
        std::string value = given.substr(part.before.size(), given.size() - around);
        if (!isValue(value)) return std::nullopt;
        values.emplace(part.name, std::move(value));
    }
    return values;
}

}  // namespace multiscene::studio
