#pragma once

#include "platform/base/File.h"

namespace platform {

/// The kinds of picture files that are read.
enum class PictureFormat { Unknown, Jpeg, Png, WebP, Heif, Gif, Tiff };

/// Told by the first bytes alone: nothing is parsed or inflated. Heif is HEIC and AVIF. Throws
/// Error when the file cannot be read.
PictureFormat pictureFormatOf(const FileHandle& file);

/// True for formats whose photos have lost detail to compression already.
bool isLossy(PictureFormat format);

}  // namespace platform
