#pragma once

#include "app/Model/QVUserInputModelBase.h"

namespace multiscene {

/// A text that the user types. Glossary: "Lenght" is length.
class QVUserTextInputModel : public QVUserInputModelBase {
  public:
    explicit QVUserTextInputModel(const platform::Value& info)
        : QVUserInputModelBase(info),
          maxLenght_(info.integer("maxLenght")),
          maxLine_(info.integer("maxLine")),
          is3DText_(info.boolean("is3DText")) {}

    /// Characters, as a reader counts them, that the template has room for; below 1 there is no limit.
    int64_t maxLenght() const { return maxLenght_; }
    /// Lines that the template has room for; below 1 there is no limit.
    int64_t maxLine() const { return maxLine_; }
    /// The text becomes an extruded mesh.
    bool is3DText() const { return is3DText_; }

  private:
    int64_t maxLenght_, maxLine_;
    bool is3DText_;
};

}  // namespace multiscene
