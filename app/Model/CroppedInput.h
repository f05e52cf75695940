#pragma once

#include "app/Model/QVUserInputModelBase.h"

namespace multiscene {

/// A picture or video that is cropped to aspectWidth : aspectHeight.
class CroppedInput : public QVUserInputModelBase {
  public:
    explicit CroppedInput(const platform::Value& info)
        : QVUserInputModelBase(info),
          aspectWidth_(info.integer("aspectWidth")),
          aspectHeight_(info.integer("aspectHeight")) {}

    /// Below 1 in either: it keeps its own shape.
    int64_t aspectWidth() const { return aspectWidth_; }
    int64_t aspectHeight() const { return aspectHeight_; }

  private:
    int64_t aspectWidth_, aspectHeight_;
};

}  // namespace multiscene
