#include "app/check/FormatExamples.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

#include "app/template/TemplateKeys.h"
#include "format/KeySet.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

using platform::Value;
namespace fs = std::filesystem;

namespace {

constexpr size_t kShownElements = 2;

std::string escaped(const std::string& text) {
    std::string result;
    for (const char letter : text)
        result += letter == '&' ? "&amp;" : letter == '<' ? "&lt;" : std::string(1, letter);
    return result;
}

std::string plainText(const Value& value) {
    const auto tagged = [&](const char* tag) {
        return std::string("<") + tag + ">" + escaped(value.stringValue()) + "</" + tag + ">";
    };
    switch (value.type()) {
        case Value::Type::Bool:
            return value.boolValue() ? "<true/>" : "<false/>";
        case Value::Type::Integer:
            return tagged("integer");
        case Value::Type::Real:
            return tagged("real");
        default:
            return tagged("string");
    }
}

/// Writes dictionaries with their keys in the order of the reference.
class ExampleText {
  public:
    static std::string of(const KeyTable& table, const Value& content) {
        ExampleText writer;
        writer.dictionary(&table, content, 0);
        return writer.text_;
    }

  private:
    void line(int depth, const std::string& text) { text_ += std::string(2 * depth, ' ') + text + "\n"; }

    void value(const KeyTable* table, const Value& value, int depth) {
        if (value.isDictionary()) return dictionary(table, value, depth);
        if (!value.isArray()) return line(depth, plainText(value));
        const Value::Array& elements = value.array();
        const size_t shown = table ? std::min(elements.size(), kShownElements) : elements.size();
        line(depth, "<array>");
        for (size_t index = 0; index < shown; ++index) this->value(table, elements[index], depth + 1);
        if (shown < elements.size()) line(depth + 1, "<!-- and so on -->");
        line(depth, "</array>");
    }

    void dictionary(const KeyTable* table, const Value& content, int depth) {
        line(depth, "<dict>");
        std::set<std::string_view> written;
        const auto entry = [&](std::string_view name, const KeyTable* children) {
            if (!content.has(name) || !written.insert(name).second) return;
            line(depth + 1, "<key>" + std::string(name) + "</key>");
            value(children, content[name], depth + 1);
        };
        if (table) {
            const KeySet keys(*table, content);
            for (auto part = keys.tables().rbegin(); part != keys.tables().rend(); ++part)
                for (const Key& key : (*part)->keys) entry(key.name, keys.find(key.name)->children);
        }
        for (const auto& [name, more] : content.dictionary()) entry(name, nullptr);
        line(depth, "</dict>");
    }

    std::string text_;
};

size_t countShown(const KeyTable& table, const Value& content) {
    return static_cast<size_t>(
        std::ranges::count_if(table.keys, [&](const Key& key) { return content.has(key.name); }));
}

const KeyTable& tableOfFile(const Value& content) {
    if (content.has("installScenes")) return templateFileKeys;
    if (content.has("scene")) return sceneGroupFileKeys;
    return content.has("Files") ? shaderFileKeys : sceneFileKeys;
}

}  // namespace

/// Few lines of many keys, in a dictionary that is about them.
bool FormatExamples::Found::isBetterThan(const Found& other) const {
    if (shownKeys != other.shownKeys) return shownKeys > other.shownKeys;
    if (isOwn != other.isOwn) return isOwn;
    return text.size() < other.text.size();
}

void FormatExamples::collect(const KeyTable& table, const Value& content) {
    const KeySet keys(table, content);
    const std::string text = ExampleText::of(table, content);
    for (const KeyTable* part : keys.tables()) {
        const Found found{text, countShown(*part, content), part == keys.tables().front()};
        const auto known = best_.find(part);
        if (known == best_.end() || found.isBetterThan(known->second)) best_.insert_or_assign(part, found);
        for (const Key& key : part->keys) {
            if (!key.children) continue;
            if (content[key.name].isDictionary()) collect(*key.children, content[key.name]);
            for (const Value& element : content.array(key.name))
                if (element.isDictionary()) collect(*key.children, element);
        }
    }
}

FormatExamples::FormatExamples() {
    std::vector<fs::path> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(platform::resourcesFolder() / "examples/birthday"))
        if (entry.path().extension() == ".plist") files.push_back(entry.path());
    std::ranges::sort(files);
    for (const fs::path& file : files) {
        const Value content = platform::readPropertyList(file);
        collect(tableOfFile(content), content);
    }
}

std::string FormatExamples::of(const KeyTable& table) const {
    const auto found = best_.find(&table);
    return found == best_.end() ? std::string() : found->second.text;
}

}  // namespace multiscene
