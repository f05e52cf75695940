// The types that scene files name, each with its maker and its keys. A class registers itself beside its code
// in one line, so that adding a type edits no other file.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "format/KeyTable.h"

namespace multiscene {

template <typename Made, typename... Arguments>
class TypeRegistry {
  public:
    struct Entry {
        std::shared_ptr<Made> (*make)(Arguments...);
        const KeyTable* keys;
    };

    /// The entry of a type name, or none.
    static const Entry* find(std::string_view name) {
        const auto found = all().find(name);
        return found == all().end() ? nullptr : &found->second;
    }

    /// All types in alphabetical order.
    static const std::map<std::string, Entry, std::less<>>& all() { return entries().byName; }

    /// A static object of this type registers a name before main() runs.
    struct Registration {
        Registration(std::string_view name, std::shared_ptr<Made> (*make)(Arguments...),
                     const KeyTable& keys) {
            entries().byName.emplace(std::string(name), Entry{make, &keys});
        }
    };

  private:
    /// A type of our own: what is named after one of the library's has another symbol with each compiler, and
    /// would be there twice where two compilers' code is linked together.
    struct Entries {
        std::map<std::string, Entry, std::less<>> byName;
    };
    static Entries& entries() {
        static Entries registered;
        return registered;
    }
};

/// The key tables of registered types, chosen by the value of `key`.
template <typename Types>
constexpr KeyVariants variantsOfTypes(std::string_view kind, std::string_view key) {
    return {kind, key,
            [](std::string_view name) -> const KeyTable* {
                const auto* entry = Types::find(name);
                return entry ? entry->keys : nullptr;
            },
            [] {
                std::vector<std::string_view> names;
                for (const auto& [name, entry] : Types::all()) names.push_back(name);
                return names;
            }};
}

}  // namespace multiscene
