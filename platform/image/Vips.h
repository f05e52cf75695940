// Start-up and errors of the picture library, for the files of this folder.
#pragma once

#include "platform/image/ImageDecoder.h"

namespace platform {

/// Starts the library on the first call. Any thread. Throws Error(Failed).
void startVips();

/// An Error from the library's message, which is taken out of its buffer.
Error pictureError(const ImageSource& source, const char* message);

}  // namespace platform
