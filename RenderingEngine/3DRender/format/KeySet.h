// The keys that one dictionary may hold.
#pragma once

#include <string>
#include <vector>

#include "format/KeyTable.h"

namespace multiscene {

/// A table, what its variants add for the values that the dictionary has, and the bases of both.
class KeySet {
  public:
    KeySet(const KeyTable& table, const platform::Value& dictionary);

    /// The most special first, each once.
    const std::vector<const KeyTable*>& tables() const { return tables_; }
    bool has(const KeyTable& table) const;
    /// The most special key of that name, or none.
    const Key* find(std::string_view name) const;
    /// What a key names: for one that takes the place of another, what that one does.
    KeyFile fileOf(const Key& key) const;
    /// The names of all keys.
    std::vector<std::string_view> names() const;

    /// A variant that the dictionary has chosen, or failed to.
    struct Choice {
        const KeyVariants* variants;
        std::string name;
    };
    const std::vector<Choice>& choices() const { return choices_; }
    /// The last choice names nothing, so that nobody knows which keys count.
    bool isUndecided() const { return isUndecided_; }

    /// Names of variants under which a key would count that does not count here.
    std::vector<std::string_view> readersOf(std::string_view key, const Choice& choice) const;

  private:
    void add(const KeyTable& table);

    std::vector<const KeyTable*> tables_;
    std::vector<Choice> choices_;
    bool isUndecided_ = false;
};

}  // namespace multiscene
