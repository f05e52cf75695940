#pragma once

#include "app/check/Finding.h"
#include "format/DictionaryWalk.h"

namespace multiscene {

/// Judges dictionaries by their key tables alone: unknown keys and types, keys of another type, missing keys,
/// values of a wrong type or out of range.
class KeyJudge : public DictionaryVisitor {
  public:
    KeyJudge(std::string file, Findings& findings) : file_(std::move(file)), findings_(findings) {}

    void dictionary(const KeySet& keys, const platform::Value& content, const std::string& keyPath) override;
    void known(const Key& key, const platform::Value& value, const std::string& keyPath) override;
    void unknown(const KeySet& keys, const std::string& name, const platform::Value& value,
                 const std::string& keyPath) override;
    void unknownType(const KeySet& keys, const platform::Value& content, const std::string& keyPath) override;

  private:
    void add(Severity severity, const std::string& keyPath, std::string message, std::string remedy = {});
    void judgeNumber(const Key& key, const platform::Value& value, const std::string& keyPath);
    void judgeChoice(const Key& key, const std::string& chosen, const std::string& keyPath);
    bool judgeRange(const Key& key, double number, const std::string& keyPath);
    void judgeComponents(const Key& key, const std::string& text, const std::string& keyPath);
    /// Whether a key that does not count here would under another type.
    bool judgeOtherTypes(const KeySet& keys, const std::string& name, const std::string& keyPath);
    void judgeElements(const Key& key, const platform::Value::Array& elements, const std::string& keyPath);

    std::string file_;
    Findings& findings_;
};

/// Whether a text is one number as scene files write it.
bool isNumberText(std::string_view text);

/// "from 1 to 179", "at least 0", "at most 3"; empty for a key that takes any number.
std::string rangeText(const Key& key);

/// "a whole number", "text of 3 numbers \"a,b,c\"": what a key wants.
std::string typeText(KeyType type);

}  // namespace multiscene
