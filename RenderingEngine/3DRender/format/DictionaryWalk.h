// Walks the dictionaries of a property list along the key tables that describe them.
#pragma once

#include <string>

#include "format/KeySet.h"
#include "platform/base/Value.h"

namespace multiscene {

/// What a walk meets. Key paths are written "object3D[2].FpsInfo.endFps".
class DictionaryVisitor {
  public:
    virtual ~DictionaryVisitor() = default;

    /// A dictionary, before its keys.
    virtual void dictionary(const KeySet&, const platform::Value& /*content*/,
                            const std::string& /*keyPath*/) {}
    /// A key that the dictionary may hold.
    virtual void known(const Key&, const platform::Value&, const std::string& /*keyPath*/) {}
    /// A key that it may not.
    virtual void unknown(const KeySet&, const std::string& /*name*/, const platform::Value&,
                         const std::string& /*keyPath*/) {}
    /// The last choice of the keys names nothing; the dictionary is not walked.
    virtual void unknownType(const KeySet&, const platform::Value& /*content*/,
                             const std::string& /*keyPath*/) {}
};

void walkDictionary(const KeyTable& table, const platform::Value& content, const std::string& keyPath,
                    DictionaryVisitor& visitor);

}  // namespace multiscene
