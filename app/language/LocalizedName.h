#pragma once

#include <string>
#include <string_view>

#include "platform/base/Value.h"

namespace multiscene {

/// "cName", "eName" and "jName" of a record, as one dictionary.
platform::Value namesOf(const platform::Value& record);

/// The name of such a dictionary in "en", "zh" or "ja", for every other language in English; one of another
/// language where that is empty. A plain string as it is.
std::string nameInLanguage(const platform::Value& name, std::string_view language);

/// "en", "zh" and "ja", each with its name.
platform::Value nameInEachLanguage(const platform::Value& name);

/// The Chinese, Japanese or, for every other language, English name of such a dictionary; one of another
/// language where that is empty. A plain string as it is.
std::string nameInUserLanguage(const platform::Value& name);

}  // namespace multiscene
