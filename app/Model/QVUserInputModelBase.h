// What a template asks its user for: texts, photos and videos.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/base/Value.h"

namespace multiscene {

/// One input of a template. Immutable once made.
class QVUserInputModelBase {
  public:
    virtual ~QVUserInputModelBase() = default;

    /// A text input for "userInputType" 0, a photo input for 1, a video input for 3, null for every other
    /// type.
    static std::shared_ptr<const QVUserInputModelBase> inputModelWithDic(const platform::Value& info);

    /// 0 a text, 1 a photo, 3 a video.
    int64_t userInputType() const { return userInputType_; }
    /// The key under which the scenes look the user's entry up.
    const std::string& renderMapKey() const { return renderMapKey_; }
    /// What the input shows while it is empty, in the user's language.
    std::string placeholder() const;
    /// The same in each language that the program speaks, by "en", "zh", "ja".
    const platform::Value& placeholders() const { return placeholders_; }

  protected:
    explicit QVUserInputModelBase(const platform::Value& info);

  private:
    int64_t userInputType_;
    std::string renderMapKey_;
    platform::Value placeholders_;
};

}  // namespace multiscene
