#include "platform/base/PropertyListFaults.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <pugixml.hpp>
#include <set>
#include <string_view>

#include "platform/base/BinaryPropertyListScan.h"
#include "platform/base/Trim.h"
#include "platform/base/Utf8.h"

namespace platform {

namespace {

constexpr int kDeepest = 200;  // far beyond what a property list may nest, for the sake of the stack
constexpr size_t kMostFaults = 1000, kMostQuoted = 80;

/// The start of a text, for a message.
std::string shortened(std::string_view text) {
    size_t end = std::min(text.size(), kMostQuoted);
    while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
    return std::string(text.substr(0, end)) + (end < text.size() ? "…" : "");
}

/// Whether the C library's reader takes the text whole.
template <typename Read>
bool isReadWhole(std::string_view text, Read read) {
    const std::string number(trimmed(text));
    char* end = nullptr;
    read(number.c_str(), &end);
    return !number.empty() && *end == '\0';
}

bool isWholeNumber(std::string_view text) {
    return isReadWhole(text, [](const char* number, char** end) { std::strtoll(number, end, 0); });
}
bool isNumber(std::string_view text) {
    // The words that strtod takes, "nan" and "inf", are no numbers.
    const bool isWord = text.find_first_of("nN") != std::string_view::npos;
    return !isWord && isReadWhole(text, [](const char* number, char** end) { std::strtod(number, end); });
}
bool isAnything(std::string_view) { return true; }

struct Element {
    bool (*takes)(std::string_view text);
    const char* wanted;
};

const std::map<std::string_view, Element>& elements() {
    static const std::map<std::string_view, Element> table{
        {"plist", {isAnything, ""}},    {"dict", {isAnything, ""}},
        {"array", {isAnything, ""}},    {"key", {isAnything, ""}},
        {"string", {isAnything, ""}},   {"true", {isAnything, ""}},
        {"false", {isAnything, ""}},    {"data", {isAnything, ""}},
        {"date", {isAnything, ""}},     {"integer", {isWholeNumber, "whole number"}},
        {"real", {isNumber, "number"}},
    };
    return table;
}

class Judge {
  public:
    explicit Judge(std::string_view text) : text_(text) {}

    std::vector<PropertyListFault> result() {
        judgeBytes();
        pugi::xml_document document;
        if (const auto parsed = document.load_buffer(text_.data(), text_.size()); !parsed)
            add(static_cast<size_t>(std::max<ptrdiff_t>(parsed.offset, 0)), parsed.description());
        else
            judgeChildren(document, 0);
        return withLines();
    }

  private:
    struct Fault {
        size_t offset;
        std::string message;
    };

    /// Lines are counted once, however many faults there are.
    std::vector<PropertyListFault> withLines() {
        std::stable_sort(faults_.begin(), faults_.end(),
                         [](const Fault& left, const Fault& right) { return left.offset < right.offset; });
        std::vector<PropertyListFault> result;
        size_t line = 1, counted = 0;
        for (Fault& fault : faults_) {
            const auto begin = text_.begin() + static_cast<ptrdiff_t>(counted);
            counted = std::min(fault.offset, text_.size());
            line +=
                static_cast<size_t>(std::count(begin, text_.begin() + static_cast<ptrdiff_t>(counted), '\n'));
            result.push_back({line, std::move(fault.message)});
        }
        return result;
    }

    void add(size_t offset, std::string message) {
        if (faults_.size() < kMostFaults) faults_.push_back({offset, std::move(message)});
    }
    void add(const pugi::xml_node& node, std::string message) {
        add(static_cast<size_t>(std::max<ptrdiff_t>(node.offset_debug(), 0)), std::move(message));
    }

    void judgeBytes() {
        if (const size_t at = firstInvalidUtf8(text_); at != std::string_view::npos)
            add(at, "holds text that is not UTF-8");
        for (size_t at = 0; (at = text_.find_first_of("<&", at)) != std::string_view::npos; ++at) {
            const std::string_view rest = text_.substr(at);
            if (rest.starts_with("<!--"))
                at = std::min(text_.find("-->", at), text_.size() - 1);
            else if (rest.starts_with("<![CDATA["))
                at = std::min(text_.find("]]>", at), text_.size() - 1);
            else if (rest.front() == '&' && !isReference(rest))
                add(at, "a bare \"&\"; write \"&amp;\"");
        }
    }

    static bool isReference(std::string_view rest) {
        const size_t end =
            rest.find_first_not_of("#abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789", 1);
        return end != std::string_view::npos && end > 1 && rest[end] == ';';
    }

    void judgeChildren(const pugi::xml_node& parent, int depth) {
        if (depth > kDeepest) return;
        if (std::string_view(parent.name()) == "dict") judgeKeys(parent);
        for (const pugi::xml_node& child : parent.children())
            if (child.type() == pugi::node_element) judge(child, depth);
    }

    void judge(const pugi::xml_node& node, int depth) {
        const std::string name = node.name(), text = node.child_value();
        const auto known = elements().find(name);
        if (known == elements().end())
            add(node, "<" + shortened(name) + "> is no element of a property list");
        else if (!known->second.takes(text))
            add(node, "\"" + shortened(text) + "\" is no " + known->second.wanted);
        judgeChildren(node, depth + 1);
    }

    void judgeKeys(const pugi::xml_node& dictionary) {
        std::set<std::string> keys;
        pugi::xml_node waiting;
        for (const pugi::xml_node& child : dictionary.children()) {
            if (child.type() != pugi::node_element) continue;
            const bool isKey = std::string_view(child.name()) == "key";
            if (isKey == static_cast<bool>(waiting)) judgeOrder(waiting, child);
            if (isKey && !keys.insert(child.child_value()).second)
                add(child, "the key \"" + shortened(child.child_value()) +
                               "\" is given twice in one dictionary; the last one counts");
            waiting = isKey ? child : pugi::xml_node();
        }
        if (waiting) judgeOrder(waiting, waiting);
    }

    void judgeOrder(const pugi::xml_node& waiting, const pugi::xml_node& found) {
        if (waiting)
            add(waiting, "the key \"" + shortened(waiting.child_value()) + "\" has no value");
        else
            add(found, "a value without a key");
    }

    std::string_view text_;
    std::vector<Fault> faults_;
};

}  // namespace

std::vector<PropertyListFault> propertyListFaults(std::span<const uint8_t> bytes) {
    if (isBinaryPropertyList(bytes)) return {};
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    const size_t end = text.find_last_not_of(" \t\r\n");
    text = end == std::string_view::npos ? std::string_view() : text.substr(0, end + 1);
    return Judge(text).result();
}

}  // namespace platform
