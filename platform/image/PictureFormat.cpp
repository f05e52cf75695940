#include "platform/image/PictureFormat.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>

namespace platform {

namespace {

using namespace std::string_view_literals;

struct Magic {
    size_t offset;
    std::string_view bytes;
    PictureFormat format;
};

constexpr Magic magics[] = {
    {0, "\xff\xd8\xff"sv, PictureFormat::Jpeg}, {0, "\x89PNG\r\n\x1a\n"sv, PictureFormat::Png},
    {8, "WEBPVP8"sv, PictureFormat::WebP},      {0, "GIF87a"sv, PictureFormat::Gif},
    {0, "GIF89a"sv, PictureFormat::Gif},        {0, "II*\0"sv, PictureFormat::Tiff},
    {0, "MM\0*"sv, PictureFormat::Tiff},        {0, "II+\0"sv, PictureFormat::Tiff},
    {0, "MM\0+"sv, PictureFormat::Tiff},        {4, "ftypheic"sv, PictureFormat::Heif},
    {4, "ftypheix"sv, PictureFormat::Heif},     {4, "ftypheim"sv, PictureFormat::Heif},
    {4, "ftypheis"sv, PictureFormat::Heif},     {4, "ftyphevc"sv, PictureFormat::Heif},
    {4, "ftyphevx"sv, PictureFormat::Heif},     {4, "ftypmif1"sv, PictureFormat::Heif},
    {4, "ftypmsf1"sv, PictureFormat::Heif},     {4, "ftypavif"sv, PictureFormat::Heif},
    {4, "ftypavis"sv, PictureFormat::Heif},
};

}  // namespace

PictureFormat pictureFormatOf(const FileHandle& file) {
    std::array<char, 16> head{};
    const int64_t count = readAt(file, head.data(), head.size(), 0);
    if (count < 0) throw errnoError(errno, "cannot be read", file.name());
    const std::string_view bytes(head.data(), static_cast<size_t>(count));
    for (const Magic& magic : magics)
        if (bytes.substr(std::min(magic.offset, bytes.size())).starts_with(magic.bytes)) return magic.format;
    return PictureFormat::Unknown;
}

bool isLossy(PictureFormat format) {
    return format == PictureFormat::Jpeg || format == PictureFormat::WebP || format == PictureFormat::Heif;
}

}  // namespace platform
