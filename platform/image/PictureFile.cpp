#include "platform/image/PictureFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "platform/image/PngFile.h"

namespace platform {

using vips::VImage;
using vips::VOption;

namespace {

/// The parts of a file as one stream.
class SplicedFile {
  public:
    SplicedFile(const FileHandle& file, const std::vector<ByteRange>& parts, std::atomic<int>& failure)
        : file_(file), failure_(failure) {
        for (const ByteRange& part : parts) {
            parts_.push_back({length_, part});
            length_ += static_cast<int64_t>(part.length);
        }
    }

    int64_t read(void* buffer, int64_t length) {
        if (position_ >= length_) return 0;
        const auto next = std::upper_bound(parts_.begin(), parts_.end(), position_,
                                           [](int64_t at, const Part& part) { return at < part.start; });
        const Part& part = *std::prev(next);
        const auto into = static_cast<uint64_t>(position_ - part.start);
        const int64_t count =
            readAt(file_, buffer, std::min(static_cast<uint64_t>(length), part.range.length - into),
                   part.range.offset + into);
        if (int none = 0; count < 0) failure_.compare_exchange_strong(none, errno);
        position_ += std::max<int64_t>(count, 0);
        return count;
    }

    int64_t seek(int64_t offset, int whence) {
        const int64_t from = whence == SEEK_CUR ? position_ : whence == SEEK_END ? length_ : 0;
        if (from + offset < 0 || from + offset > length_) return -1;
        return position_ = from + offset;
    }

  private:
    struct Part {
        int64_t start;  ///< in the stream
        ByteRange range;
    };

    const FileHandle& file_;
    std::atomic<int>& failure_;
    std::vector<Part> parts_;
    int64_t position_ = 0, length_ = 0;
};

int64_t readSpliced(VipsSourceCustom*, void* buffer, int64_t length, void* file) {
    return static_cast<SplicedFile*>(file)->read(buffer, length);
}

int64_t seekSpliced(VipsSourceCustom*, int64_t offset, int whence, void* file) {
    return static_cast<SplicedFile*>(file)->seek(offset, whence);
}

void releaseSpliced(void* file, GClosure*) { delete static_cast<SplicedFile*>(file); }

vips::VSource sourceOf(std::unique_ptr<SplicedFile> file) {
    VipsSourceCustom* source = vips_source_custom_new();
    g_signal_connect(source, "seek", G_CALLBACK(seekSpliced), file.get());
    // The source owns the file from here on.
    g_signal_connect_data(source, "read", G_CALLBACK(readSpliced), file.release(), releaseSpliced,
                          GConnectFlags(0));
    return vips::VSource(VIPS_SOURCE(source));
}

VOption* readingOnce() {
    return VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL)->set("fail_on", VIPS_FAIL_ON_TRUNCATED);
}

}  // namespace

VImage PictureFile::open(int shrink) const {
    const std::vector<ByteRange> parts =
        format_ == PictureFormat::Png ? picturePartsOfPng(file_) : std::vector<ByteRange>{{0, file_.size()}};
    const vips::VSource source = sourceOf(std::make_unique<SplicedFile>(file_, parts, failure_));
    switch (format_) {
        case PictureFormat::Jpeg:
            return VImage::jpegload_source(source, readingOnce()->set("shrink", shrink));
        case PictureFormat::Png:
            return VImage::pngload_source(source, readingOnce());
        case PictureFormat::WebP:
            return VImage::webpload_source(source, readingOnce());
        case PictureFormat::Heif:
            return VImage::heifload_source(source, readingOnce());
        case PictureFormat::Gif:
            return VImage::gifload_source(source, readingOnce());
        case PictureFormat::Tiff:
            return VImage::tiffload_source(source, readingOnce());
        case PictureFormat::Unknown:
            break;
    }
    throw Error(ErrorKind::Failed, "is not a picture that can be read");
}

}  // namespace platform
