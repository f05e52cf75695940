#pragma once

#include "app/Model/CroppedInput.h"

namespace multiscene {

/// A photo that the user chooses.
class QVUserPhotoInputModel : public CroppedInput {
  public:
    using CroppedInput::CroppedInput;
};

}  // namespace multiscene
