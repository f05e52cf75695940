#pragma once

#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// "cName", "eName" and "jName" of a record, as one dictionary.
platform::Value namesOf(const platform::Value& record);

/// The Chinese, Japanese or, for every other language, English name of such a dictionary; one of another
/// language where that is empty. A plain string as it is.
std::string nameInUserLanguage(const platform::Value& name);

}  // namespace multiscene
