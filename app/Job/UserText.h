#pragma once

#include <string>

#include "app/Model/QVUserTextInputModel.h"

namespace multiscene {

/// The text as it goes into the map: line ends as "\n". Throws platform::Error(Input) naming `key` when it is
/// not UTF-8, holds control characters, or has more characters or lines than `limits` allows (null: none).
std::string acceptedText(const std::string& text, const std::string& key, const QVUserTextInputModel* limits);

}  // namespace multiscene
