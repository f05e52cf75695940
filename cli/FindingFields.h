#pragma once

#include "app/check/Finding.h"
#include "platform/base/Value.h"

namespace multiscene::cli {

/// A finding as an event tells it.
inline platform::Value::Dictionary fieldsOf(const Finding& finding) {
    return {{"severity", word(finding.severity)},
            {"file", finding.file},
            {"key", finding.keyPath},
            {"message", finding.message},
            {"remedy", finding.remedy}};
}

}  // namespace multiscene::cli
