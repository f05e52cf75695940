#pragma once

#include "app/Model/QVUserInputModelBase.h"

namespace multiscene {

/// A photo that the user chooses, cropped to aspectWidth : aspectHeight.
class QVUserPhotoInputModel : public QVUserInputModelBase {
  public:
    explicit QVUserPhotoInputModel(const platform::Value& info)
        : QVUserInputModelBase(info),
          aspectWidth_(info.integer("aspectWidth")),
          aspectHeight_(info.integer("aspectHeight")) {}

    /// Below 1 in either: the photo keeps its own shape.
    int64_t aspectWidth() const { return aspectWidth_; }
    int64_t aspectHeight() const { return aspectHeight_; }

  private:
    int64_t aspectWidth_, aspectHeight_;
};

}  // namespace multiscene
