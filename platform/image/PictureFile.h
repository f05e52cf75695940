// Opens a picture with the loader of its format, by name: the library's own search would let every loader
// have a look, and some inflate what they are given.
#pragma once

#include <atomic>
#include <vips/vips8>

#include "platform/base/File.h"
#include "platform/image/PictureFormat.h"

namespace platform {

/// Refers to an open file, and must outlive the pictures that are opened from it. One thread, beside those of
/// the library.
class PictureFile {
  public:
    /// Throws Error when the file cannot be read.
    explicit PictureFile(const FileHandle& file) : file_(file), format_(pictureFormatOf(file)) {}

    const FileHandle& file() const { return file_; }
    PictureFormat format() const { return format_; }

    /// The picture as it lies in the file, to be read once from top to bottom; only its header is read yet.
    /// `shrink` is 1, 2, 4 or 8: a JPEG is decoded at that fraction, other formats whole. Throws
    /// vips::VError, or Error(Failed) for what is no picture.
    vips::VImage open(int shrink = 1) const;

    /// The errno value of the first read that failed, which the library takes for damage or for the end; else
    /// 0.
    int failure() const { return failure_; }

  private:
    const FileHandle& file_;
    PictureFormat format_;
    mutable std::atomic<int> failure_ = 0;
};

}  // namespace platform
