#pragma once

#include "app/Model/QVUserInputModelBase.h"

namespace multiscene {

/// A video that the user chooses, cropped to aspectWidth : aspectHeight. The scenes that show it say how long
/// it is seen and how loud it is.
class QVUserVideoInputModel : public QVUserInputModelBase {
  public:
    explicit QVUserVideoInputModel(const platform::Value& info)
        : QVUserInputModelBase(info),
          aspectWidth_(info.integer("aspectWidth")),
          aspectHeight_(info.integer("aspectHeight")) {}

    /// Below 1 in either: the video keeps its own shape.
    int64_t aspectWidth() const { return aspectWidth_; }
    int64_t aspectHeight() const { return aspectHeight_; }

  private:
    int64_t aspectWidth_, aspectHeight_;
};

}  // namespace multiscene
