#pragma once

#include <string>

#include "platform/http/RequestHead.h"

namespace multiscene::studio {

/// "en", "zh" or "ja": what the query's "lang", else the cookie "language", else the browser asks for first
/// of these; else English.
std::string languageOf(const platform::http::RequestHead& head);

}  // namespace multiscene::studio
