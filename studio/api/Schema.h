// What JSON bodies and answers look like: JSON Schema, in the few words that the API needs. What a body is
// held against is what the API's description shows.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/Value.h"
#include "studio/api/Problem.h"

namespace multiscene::studio::schema {

using platform::Value;
using Members = std::initializer_list<std::pair<const char*, Value>>;

/// Any text; one of 0 to so many characters.
Value text();
Value text(int64_t mostCharacters);
/// One of these words.
Value word(std::initializer_list<const char*> words);
Value boolean();
Value integer(int64_t least, int64_t most);
Value integer();
Value number(double least, double most);
Value number();
/// RFC 3339, UTC.
Value time();
/// What a URL's path begins with.
Value address();
Value list(Value item, int64_t most = -1);
/// Members of any name, each like that.
Value map(Value member, int64_t most = -1);
/// Members of these names and no others; those whose name ends in "?" may be left out.
Value object(Members members);
/// `base`, and these members.
Value extended(const Value& base, Members members);
Value orNull(Value schema);
/// One of several.
Value either(std::initializer_list<Value> schemas);
Value anything();
/// What problems look like.
Value problem();

/// What of `value` is not as `schema` says, in the order of its members; none: it is so.
std::vector<ProblemEntry> faultsIn(const Value& value, const Value& schema, const std::string& pointer = {});

}  // namespace multiscene::studio::schema
