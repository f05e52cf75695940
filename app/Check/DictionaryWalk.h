// Walks the dictionaries of a property list along the key tables that describe them.
#pragma once

#include <string>
#include <vector>

#include "other/KeyTable.h"
#include "platform/base/Value.h"

namespace multiscene {

/// What a walk meets. Key paths are written "object3D[2].FpsInfo.endFps".
class DictionaryVisitor {
  public:
    virtual ~DictionaryVisitor() = default;

    /// A dictionary, before its keys.
    virtual void dictionary(const KeyTable&, const platform::Value& /*content*/,
                            const std::string& /*keyPath*/) {}
    /// A key that its table lists.
    virtual void known(const Key&, const platform::Value&, const std::string& /*keyPath*/) {}
    /// A key that its table does not list.
    virtual void unknown(const KeyTable&, const std::string& /*name*/, const platform::Value&,
                         const std::string& /*keyPath*/) {}
    /// A "type" that names nothing; the dictionary is not walked. `kind`: "node", "component", "time-source".
    virtual void unknownType(const std::string& /*kind*/, const std::string& /*type*/,
                             const std::vector<std::string_view>& /*types*/, const std::string& /*keyPath*/) {
    }
};

void walkDictionary(const KeyTable& table, const platform::Value& content, const std::string& keyPath,
                    DictionaryVisitor& visitor);

/// The names of all keys of a table and its bases.
std::vector<std::string_view> keyNames(const KeyTable& table);

}  // namespace multiscene
