// Opens a picture with the loader of its format, by name: the library's own search would let every loader
// have a look, and some inflate what they are given.
#pragma once

#include <vips/vips8>

#include "platform/base/File.h"
#include "platform/image/PictureFormat.h"

namespace platform {

/// The picture as it lies in the file, to be read once from top to bottom; only its header is read yet.
/// `shrink` is 1, 2, 4 or 8: a JPEG is decoded at that fraction, other formats whole. Throws vips::VError, or
/// Error(Failed) for what is no picture.
vips::VImage openPicture(const FileHandle& file, PictureFormat format, int shrink = 1);

}  // namespace platform
