// Reads picture files: JPEG, PNG, WebP, HEIC, AVIF, GIF (its first frame) and TIFF, told apart by their
// content and never by their name. Photos come from real phones, so every reading is upright (EXIF
// orientation applied), in sRGB (embedded profiles and CMYK converted), 8 bits a channel. Any thread; several
// at once are fine.
#pragma once

#include <filesystem>
#include <string>

#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "platform/image/Image.h"
#include "platform/image/PhotoCrop.h"

namespace platform {

/// Pictures beyond these are refused from their header, before a pixel is decoded. Within them no decoding
/// takes more than 1 GiB.
struct ImageLimits {
    /// Width times height of a file that is decoded in strips, or at a fraction of its size.
    static constexpr int64_t streamedPixels = limitOf<int64_t>("maxPicturePixels");
    /// Either side: what is read in strips still takes memory by its width.
    static constexpr int longSide = limitOf<int>("maxPictureSide");
    /// Bytes that a decoder must hold at once: progressive, interlaced and tiled files.
    static constexpr int64_t heldBytes = limitOf<int64_t>("maxPictureHeldBytes");
    /// Pixels of a decoded result.
    static constexpr int64_t resultPixels = limitOf<int64_t>("maxDecodedPixels");
};

/// Who is blamed when a picture cannot be read, and under what name.
struct ImageSource {
    std::string name;
    ErrorKind kind = ErrorKind::Input;
};

/// Size of the upright picture, from the header alone. Throws Error when the file is no picture, or one
/// beyond ImageLimits.
ImageSize readImageSize(const FileHandle& file, const ImageSource& source = {});

struct DecodeOptions {
    /// The exact size of the result; the picture is stretched to it, averaging over all of its pixels where
    /// it shrinks, with bicubic interpolation where it grows. Empty: the picture's own size.
    ImageSize canvas = {};
    /// With an empty canvas: shrink, keeping the proportions, until neither side is longer. 0: no limit.
    int maxLongSide = 0;
    ImageSource source = {};
};

/// The decoded picture. Files are decoded no larger than needed. A file that is cut short or damaged is an
/// Error, never a half-grey picture.
Bitmap decodeImage(const FileHandle& file, const DecodeOptions& options = {});

/// From now on this process keeps what decodeImage() has decoded, those pictures that were wanted last and at
/// most so many bytes, and gives out copies while their files stay the same. For who shows the same ones
/// again and again.
void keepDecodedImages(size_t mostBytes);

/// Writes the user's photo the way templates want it: upright, sRGB, the wanted part of it cut to `aspect`,
/// no side longer than `maxLongSide` pixels (0: no limit; never enlarged). Opaque photos of a lossy format
/// become a JPEG of high quality, everything else a PNG that keeps its alpha; readers go by the content, so
/// the name of `out` is free. `out` appears only when complete. Returns the size written. Throws Error.
ImageSize prepareUserPhoto(const FileHandle& photo, const std::filesystem::path& out, Aspect aspect,
                           int maxLongSide, const ImageSource& source = {}, const PhotoCrop& crop = {});

/// A photo that is kept for later use.
struct KeptPhoto {
    std::filesystem::path file;
    ImageSize size;
};

/// Writes into `folder` what is kept of a photo: "photo.jpg", or "photo.png" where it is transparent
/// somewhere, upright, sRGB, no side longer than `maxLongSide`, nothing of the file but its pixels; and
/// "proxy.jpg", a small picture of it over white. Throws Error.
KeptPhoto keepPhoto(const FileHandle& photo, const std::filesystem::path& folder, int maxLongSide,
                    int maxProxySide, const ImageSource& source = {});

}  // namespace platform
