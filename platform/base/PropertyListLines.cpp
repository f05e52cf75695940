#include "platform/base/PropertyListLines.h"

#include <algorithm>
#include <pugixml.hpp>
#include <string_view>

#include "platform/base/BinaryPropertyListScan.h"

namespace platform {

namespace {

pugi::xml_node nextElement(pugi::xml_node node) {
    while (node && node.type() != pugi::node_element) node = node.next_sibling();
    return node;
}

/// The key of a dictionary, which stands before its value.
pugi::xml_node keyOf(const pugi::xml_node& dictionary, std::string_view name) {
    for (const pugi::xml_node& child : dictionary.children("key"))
        if (name == child.child_value()) return child;
    return {};
}

pugi::xml_node elementOf(const pugi::xml_node& array, size_t index) {
    pugi::xml_node element = nextElement(array.first_child());
    for (; index > 0 && element; --index) element = nextElement(element.next_sibling());
    return element;
}

/// Follows a key path as far as there is something.
class Path {
  public:
    explicit Path(const pugi::xml_node& root) : value_(root), place_(root) {}

    /// "childNode[2]" or "FpsInfo": whether it is there.
    bool follow(std::string_view step) {
        const size_t bracket = std::min(step.find('['), step.size());
        if (!enter(keyOf(value_, step.substr(0, bracket)))) return false;
        for (size_t at = bracket; at < step.size(); at = step.find('[', at + 1)) {
            const pugi::xml_node element = elementOf(value_, std::strtoul(step.data() + at + 1, nullptr, 10));
            if (!element) return false;
            value_ = place_ = element;
        }
        return true;
    }

    ptrdiff_t offset() const { return place_.offset_debug(); }

  private:
    bool enter(const pugi::xml_node& key) {
        if (!key) return false;
        place_ = key;
        value_ = nextElement(key.next_sibling());
        return static_cast<bool>(value_);
    }

    pugi::xml_node value_, place_;
};

ptrdiff_t offsetOf(const pugi::xml_node& root, std::string_view keyPath) {
    Path path(root);
    while (!keyPath.empty()) {
        const size_t end = std::min(keyPath.find('.'), keyPath.size());
        if (!path.follow(keyPath.substr(0, end))) break;
        keyPath.remove_prefix(std::min(end + 1, keyPath.size()));
    }
    return path.offset();
}

}  // namespace

std::map<std::string, size_t> propertyListLines(std::span<const uint8_t> bytes,
                                                const std::set<std::string>& keyPaths) {
    std::map<std::string, size_t> lines;
    pugi::xml_document document;
    if (isBinaryPropertyList(bytes) || !document.load_buffer(bytes.data(), bytes.size())) return lines;
    const pugi::xml_node root = nextElement(document.child("plist").first_child());
    if (!root) return lines;
    for (const std::string& keyPath : keyPaths) {
        const ptrdiff_t offset = std::clamp<ptrdiff_t>(offsetOf(root, keyPath), 0, std::ssize(bytes));
        lines[keyPath] = 1 + static_cast<size_t>(std::count(bytes.begin(), bytes.begin() + offset, '\n'));
    }
    return lines;
}

}  // namespace platform
