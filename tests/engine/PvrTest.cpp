// PVR texture files: what is taken, what is refused, and the pixels that come out.
#include <gmock/gmock.h>
#include <zlib.h>

#include <random>

#include "PvrBytes.h"
#include "platform/archive/Gzip.h"
#include "platform/base/Error.h"
#include "platform/image/PvrFile.h"
#include "platform/image/PvrPictures.h"
#include "platform/image/PvrtcDecoder.h"
#include "tests/engine/MediaFiles.h"

namespace multiscene {
namespace {

using platform::decodePvrtc;
using platform::PvrFile;
using platform::PvrFormat;
using platform::PvrLevel;
using platform::pvrPictures;
using platform::PvrtcBits;
using platform::pvrtcLevelBytes;
using testing::Bytes;
using ::testing::HasSubstr;
using testing::isNear;
using testing::Pixel;
using testing::pvr;
using Header = testing::PvrHeader;

Bytes gzipped(const Bytes& bytes) {
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
    Bytes packed(deflateBound(&stream, bytes.size()));
    stream.next_in = const_cast<Bytef*>(bytes.data());
    stream.avail_in = uInt(bytes.size());
    stream.next_out = packed.data();
    stream.avail_out = uInt(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

/// The same bytes everywhere.
Bytes noise(size_t count) {
    Bytes bytes;
    for (uint32_t state = 1; bytes.size() < count;) {
        state = state * 1103515245u + 12345u;
        bytes.push_back(uint8_t(state >> 16));
    }
    return bytes;
}

uint32_t checkSum(const Bytes& bytes) {
    uint32_t sum = 0x811c9dc5;
    for (const uint8_t byte : bytes) sum = (sum ^ byte) * 16777619u;
    return sum;
}

TEST(PvrFile, RefusesWhatItCannotRead) {
    const auto problem = [](const Header& header, size_t bytes = 16) {
        const PvrFile file(pvr(header, Bytes(bytes)));
        EXPECT_EQ(file.levels().empty(), !file.problem().empty());
        return file.problem();
    };
    EXPECT_EQ(problem({}), "");
    EXPECT_EQ(problem({.surfaces = 0}), "");
    EXPECT_THAT(problem({.tag = 0x03525650}), HasSubstr("not a PVR"));
    EXPECT_THAT(problem({.flags = 20}), HasSubstr("20"));
    EXPECT_THAT(problem({.flags = 97}), HasSubstr("97"));
    EXPECT_THAT(problem({.surfaces = 2}), HasSubstr("surface"));
    EXPECT_THAT(problem({.mipMaps = ~0u}), HasSubstr("mip"));
    EXPECT_THAT(problem({.width = 0}), HasSubstr("0 x 2"));
    EXPECT_THAT(problem({.width = 1u << 30, .height = 1u << 30}), HasSubstr("large"));
    EXPECT_THAT(problem({}, 15), HasSubstr("cut off"));
    EXPECT_THAT(problem({.mipMaps = 1}, 19), HasSubstr("cut off"));
    EXPECT_THAT(problem({.length = ~0u}), HasSubstr("cut off"));
    EXPECT_THAT(problem({.bitsPerPixel = 8}), HasSubstr("too few bits"));
    EXPECT_THAT(problem({.width = 12, .height = 8, .flags = 25, .bitsPerPixel = 4}, 64),
                HasSubstr("powers of two"));
    EXPECT_THAT(problem({.length = 0x03525650}), HasSubstr("version 3"));
    const PvrFile unknown(pvr({.width = 7, .height = 5, .flags = 20}, {}));
    EXPECT_EQ(unknown.width(), 7u) << "the size is known although the format is not taken";
    EXPECT_EQ(PvrFile(Bytes(51)).width(), 0u);
}

TEST(PvrFile, FindsItsLevelsAlsoWhenCompressed) {
    Bytes data(4 * 8 * 2 + 2 * 4 * 2 + 1 * 2 * 2 + 1 * 1 * 2);
    data[64] = 7;
    const Bytes bytes =
        pvr({.width = 4, .height = 8, .mipMaps = 3, .flags = 0x8110, .bitsPerPixel = 16}, data);
    for (const Bytes& form : {bytes, gzipped(bytes)}) {
        const PvrFile file(form);
        ASSERT_EQ(file.problem(), "");
        ASSERT_EQ(file.levels().size(), 4u);
        EXPECT_EQ(file.levels()[1].data[0], 7);
        EXPECT_EQ(file.levels()[3].width, 1);
        EXPECT_EQ(file.levels()[3].height, 1);
    }
    const Bytes packed = gzipped(bytes);
    EXPECT_THAT(PvrFile(Bytes(packed.begin(), packed.end() - 9)).problem(), HasSubstr("damaged"));
    EXPECT_THROW(platform::inflateGzip(gzipped(Bytes(1 << 20)), "bomb.gz", 1000), platform::Error);
    for (const uint64_t count : {PvrFile::maxBytes - 1, PvrFile::maxBytes, PvrFile::maxBytes + 1}) {
        Bytes padded = bytes;
        padded.resize(count);
        EXPECT_EQ(PvrFile(gzipped(padded)).problem().empty(), count <= PvrFile::maxBytes) << count;
    }
}

TEST(PvrtcDecoder, GivesTheBitsOfAnIndependentDecoder) {
    struct Case {
        PvrtcBits bits;
        int width, height;
        uint32_t sum;
        Pixel last;
    };
    // The sums and pixels are those of the format's reference tool for the same blocks.
    const Case cases[] = {{PvrtcBits::Four, 32, 32, 0xa354aad8, {117, 221, 178, 204}},
                          {PvrtcBits::Two, 32, 32, 0xbbde3308, {147, 180, 90, 157}},
                          {PvrtcBits::Four, 8, 32, 0xef5627b3, {103, 113, 125, 0}},
                          {PvrtcBits::Two, 64, 8, 0x40f20365, {100, 164, 130, 155}},
                          {PvrtcBits::Four, 4, 4, 0xcebb50cc, {178, 176, 92, 218}}};
    for (const Case& it : cases) {
        const Bytes blocks = noise(pvrtcLevelBytes(it.width, it.height, it.bits));
        Bytes pixels = decodePvrtc(blocks, it.width, it.height, it.bits, true);
        EXPECT_EQ(checkSum(pixels), it.sum) << it.width << " x " << it.height;
        const Bytes last(pixels.end() - 4, pixels.end());
        EXPECT_TRUE(std::equal(last.begin(), last.end(), it.last.begin())) << ::testing::PrintToString(last);
        const Bytes opaque = decodePvrtc(blocks, it.width, it.height, it.bits, false);
        for (size_t i = 3; i < pixels.size(); i += 4) pixels[i] = 255;
        EXPECT_EQ(opaque, pixels) << "the RGB variant has no alpha";
    }
}

TEST(PvrtcDecoder, TakesNoImpossibleSizes) {
    const Bytes blocks = noise(32);
    EXPECT_FALSE(decodePvrtc(blocks, 8, 8, PvrtcBits::Four, true).empty());
    for (const auto& [width, height] : {std::pair{0, 8}, {8, -8}, {12, 8}, {16, 8}, {1 << 30, 1 << 30}})
        EXPECT_TRUE(decodePvrtc(blocks, width, height, PvrtcBits::Four, true).empty()) << width;
    EXPECT_TRUE(decodePvrtc(std::span(blocks).first(31), 1, 1, PvrtcBits::Two, true).empty());
}

TEST(PvrPictures, ColoursComeOutOfEveryFormat) {
    struct Case {
        uint32_t flags, bitsPerPixel;
        Bytes pixel;
        Pixel expected;
    };
    const Case cases[] = {{16, 16, {0x34, 0x12}, {17, 34, 51, 68}},
                          {17, 16, {0x01, 0xf8}, {255, 0, 0, 255}},
                          {18, 32, {1, 2, 3, 4}, {1, 2, 3, 4}},
                          {19, 16, {0xe0, 0x07}, {0, 255, 0, 255}},
                          {21, 24, {10, 20, 30}, {10, 20, 30, 255}},
                          {22, 8, {7}, {7, 7, 7, 255}},
                          {23, 16, {7, 9}, {7, 7, 7, 9}},
                          {26, 32, {1, 2, 3, 4}, {3, 2, 1, 4}},
                          {27, 8, {9}, {0, 0, 0, 9}}};
    for (const Case& it : cases) {
        Bytes data;
        for (int i = 0; i < 9; ++i) data.insert(data.end(), it.pixel.begin(), it.pixel.end());
        const auto pictures = pvrPictures(PvrFile(
            pvr({.width = 3, .height = 3, .flags = it.flags, .bitsPerPixel = it.bitsPerPixel}, data)));
        ASSERT_EQ(pictures.size(), 1u) << it.flags;
        EXPECT_TRUE(std::ranges::equal(std::span(pictures[0].pixel(2, 2), 4), it.expected)) << it.flags;
    }
}

TEST(PvrPictures, CompressedLevelsAreDecodedAndBadFilesGiveNone) {
    const Bytes blocks = noise(32 * 32 / 2 + 16 * 16 / 2);
    const auto pictures = pvrPictures(PvrFile(pvr(
        {.width = 32, .height = 32, .mipMaps = 1, .flags = 25, .bitsPerPixel = 4, .alphaMask = 1}, blocks)));
    ASSERT_EQ(pictures.size(), 2u);
    EXPECT_EQ(pictures[1].width, 16);
    const Pixel expected{117, 221, 178, 204};
    EXPECT_TRUE(std::ranges::equal(std::span(pictures[0].pixel(31, 31), 4), expected));
    EXPECT_TRUE(pvrPictures(PvrFile(pvr({.flags = 20}, {}))).empty());
}

}  // namespace
}  // namespace multiscene
