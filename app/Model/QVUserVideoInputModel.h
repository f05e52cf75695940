#pragma once

#include "app/Model/CroppedInput.h"

namespace multiscene {

/// A video that the user chooses. The scenes that show it say how long it is seen and how loud it is.
class QVUserVideoInputModel : public CroppedInput {
  public:
    using CroppedInput::CroppedInput;
};

}  // namespace multiscene
