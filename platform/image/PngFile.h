// The parts of a PNG file that make its picture. Texts, dates and unknown chunks are never handed to the
// decoder: a few bytes of them can claim, or inflate to, gigabytes.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/File.h"

namespace platform {

/// A stretch of bytes of a file.
struct ByteRange {
    uint64_t offset = 0, length = 0;
};

/// The signature and the chunks that matter, neighbours joined, up to and including the end chunk. Reads
/// chunk headers only. A chunk that reaches beyond the file ends the list, so that the decoder meets the cut.
/// Throws Error(Failed): more chunks than a picture has.
std::vector<ByteRange> picturePartsOfPng(const FileHandle& file);

}  // namespace platform
