// The keys of the scene format, described once. A class reads its dictionary through its table, `check`
// judges a template with the same table, and the reference of the scene format is generated from it.
#pragma once

#include <glm/glm.hpp>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/Value.h"

namespace multiscene {

enum class KeyType {
    Bool,
    Integer,
    Number,
    Text,
    Vector2,     ///< text "a,b"
    Vector3,     ///< text "a,b,c"
    Color,       ///< text "red,green,blue,alpha", each 0 to 1
    Choice,      ///< text, one of Key::choices or of the names of KeyVariants
    Dictionary,  ///< with the keys of Key::children
    Array,       ///< of dictionaries with the keys of Key::children
    TextArray,   ///< of texts
};

/// How a value reaches its reader.
enum class KeyLookup {
    Plain,     ///< as written
    UserMap,   ///< a text may name an entry of the user media map
    Path,      ///< a path with macros
    UserPath,  ///< an entry of the user media map, else a path with macros
};

/// What a text that names a file has to name.
enum class KeyFile { Any, Picture, Video, Sound, Track, ColorTable, Mesh };

struct KeyTable;

/// Further keys of a dictionary, chosen by the value of one of its keys: those of a node by its "type", of a
/// texture by its "textureType".
struct KeyVariants {
    std::string_view kind;  ///< for messages: "node", "light"
    std::string_view key;   ///< the key that chooses; a number chooses by its decimal text
    const KeyTable* (*find)(std::string_view name);  ///< null for a name that is none
    std::vector<std::string_view> (*names)();
};

struct Key {
    std::string_view name;
    KeyType type = KeyType::Integer;
    std::string_view unit = {};  ///< frames, degrees, pixels, model units, seconds; empty: none
    std::string_view fallback =
        {};  ///< what a missing key reads as, written as in a scene file; empty: nothing
    std::string_view meaning = {};
    KeyLookup lookup = KeyLookup::Plain;
    bool required = false;
    /// Of a number, of each component of a vector, or of the number of texts in an array.
    double minimum = -std::numeric_limits<double>::infinity();
    double maximum = std::numeric_limits<double>::infinity();
    std::span<const std::string_view> choices = {};
    const KeyTable* children = nullptr;
    KeyFile file = KeyFile::Any;
    std::string_view onlyWith = {};   ///< a key that must be true for this one to count
    std::string_view standsFor = {};  ///< a key whose place this one takes where that is not given
};

struct KeyTable {
    std::string_view owner;          ///< the class or dictionary that it describes
    std::string_view summary;        ///< one sentence for the reference
    const KeyTable* base = nullptr;  ///< read first, by the base class
    std::span<const Key> keys = {};
    const KeyVariants* variants = nullptr;  ///< what a dictionary of this table reads besides

    /// The key of this table or of one of its bases, or none.
    const Key* find(std::string_view name) const;
};

/// The variants of an array whose elements have a `name` and the `keys` of that name.
template <const auto& list>
constexpr KeyVariants variantsOfList(std::string_view kind, std::string_view key) {
    return {kind, key,
            [](std::string_view name) -> const KeyTable* {
                for (const auto& each : list)
                    if (each.name == name) return each.keys;
                return nullptr;
            },
            [] {
                std::vector<std::string_view> names;
                for (const auto& each : list) names.push_back(each.name);
                return names;
            }};
}

/// Reads one dictionary through its table: lenient types, the table's fallbacks for missing keys. Naming a
/// key that the table does not list is a programming fault (std::logic_error).
class KeyReader {
  public:
    KeyReader(const KeyTable& table, const platform::Value& dictionary)
        : table_(table), dictionary_(dictionary) {}

    bool has(std::string_view key) const { return dictionary_.has(key); }
    bool boolean(std::string_view key) const { return value(key).boolValue(); }
    int64_t integer(std::string_view key) const { return value(key).integerValue(); }
    int32_t int32(std::string_view key) const { return value(key).intValue(); }
    float number(std::string_view key) const { return value(key).floatValue(); }
    std::string text(std::string_view key) const { return value(key).stringValue(); }
    /// Components that the text does not give are 0.
    glm::vec2 vector2(std::string_view key) const;
    glm::vec3 vector3(std::string_view key) const;
    glm::vec4 vector4(std::string_view key) const;
    const platform::Value::Array& array(std::string_view key) const;
    /// The raw value; none when the key is missing and has no fallback.
    platform::Value value(std::string_view key) const;

  private:
    const Key& keyNamed(std::string_view key) const;

    const KeyTable& table_;
    platform::Value dictionary_;
};

}  // namespace multiscene
