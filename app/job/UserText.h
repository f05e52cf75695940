#pragma once

#include <string>
#include <vector>

#include "app/Model/QVUserTextInputModel.h"
#include "platform/base/Limits.h"

namespace multiscene {

/// A text with more than so many times the characters or lines of its limit is refused; one with fewer is
/// drawn in smaller letters.
inline constexpr int kMostOverLimit = platform::limitOf<int>("maxTextOverRoom");

struct AcceptedText {
    std::string text;                ///< line ends are "\n"
    std::vector<std::string> notes;  ///< what the user should know: where it is over its limits
    double scale = 1;                ///< how much smaller it has to be where nothing else makes it fit
};

/// Judges a text before it goes into the map. Characters are those that a reader counts. Throws
/// platform::Error(Input) naming `key` when it is not UTF-8, holds control characters, or is more than
/// kMostOverLimit times over what `limits` allows (null: no limits).
AcceptedText acceptText(const std::string& text, const std::string& key, const QVUserTextInputModel* limits);

}  // namespace multiscene
