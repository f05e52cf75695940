#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vips/vips8>

#include "platform/base/Paths.h"
#include "platform/image/ImageDecoder.h"
#include "platform/image/ImageWriter.h"
#include "platform/image/PhotoFilter.h"
#include "tests/platform/PngBytes.h"
#include "tests/platform/TemporaryFolder.h"

namespace platform {

using vips::VImage;

namespace {

using Pixel = std::array<int, 4>;

Pixel at(const Bitmap& bitmap, int x, int y) {
    const uint8_t* pixel = bitmap.pixel(x, y);
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

testing::AssertionResult isNear(Pixel actual, Pixel expected, int tolerance) {
    for (size_t i = 0; i < 4; ++i)
        if (std::abs(actual[i] - expected[i]) > tolerance)
            return testing::AssertionFailure() << testing::PrintToString(actual) << " is not "
                                               << testing::PrintToString(expected) << " +- " << tolerance;
    return testing::AssertionSuccess();
}

class ImageTest : public testing::Test {
  protected:
    ImageTest() { vips_init("test"); }

    std::string path(const std::string& name) const { return folder_.file(name); }
    FileHandle open(const std::string& name) const {
        return FileHandle(::open(path(name).c_str(), O_RDONLY));
    }
    Bitmap decode(const std::string& name, const DecodeOptions& options = {}) const {
        return decodeImage(open(name), options);
    }
    std::string bytes(const std::string& name) const {
        std::ifstream stream(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void write(const std::string& name, std::string_view content) const {
        writeFileAtomically(path(name), content);
    }
    /// The error of reading a file, both its size and its pixels; fails when there is none.
    Error errorOf(const std::string& name) const {
        try {
            decode(name, {.canvas = {64, 64}, .source = {"holiday.jpg", ErrorKind::Input}});
        } catch (const Error& error) {
            return error;
        }
        ADD_FAILURE() << name << " was read";
        return Error(ErrorKind::Failed, "");
    }

    const test::TemporaryFolder folder_;
};

const Pixel red{255, 0, 0, 255}, green{0, 255, 0, 255}, blue{0, 0, 255, 255}, white{255, 255, 255, 255};

VImage flat(int width, int height, const std::vector<double>& color, VipsInterpretation interpretation,
            VipsBandFormat format = VIPS_FORMAT_UCHAR) {
    return VImage::black(width, height)
        .cast(format)
        .new_from_image(color)
        .copy(VImage::option()->set("interpretation", interpretation));
}

/// Red, green over blue, white; each quarter 48 x 32.
VImage quarters() {
    const auto part = [](double r, double g, double b) {
        return flat(48, 32, {r, g, b}, VIPS_INTERPRETATION_sRGB);
    };
    return part(255, 0, 0)
        .join(part(0, 255, 0), VIPS_DIRECTION_HORIZONTAL)
        .join(part(0, 0, 255).join(part(255, 255, 255), VIPS_DIRECTION_HORIZONTAL), VIPS_DIRECTION_VERTICAL);
}

long peakMegabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

TEST_F(ImageTest, EveryOrientationIsTurnedUpright) {
    // What stands in the corners of the upright picture: top left, top right, bottom left, bottom right.
    const std::array<std::array<Pixel, 4>, 8> upright{{{red, green, blue, white},
                                                       {green, red, white, blue},
                                                       {white, blue, green, red},
                                                       {blue, white, red, green},
                                                       {red, blue, green, white},
                                                       {blue, red, white, green},
                                                       {white, green, blue, red},
                                                       {green, white, red, blue}}};
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        VImage image = quarters().copy();
        image.set("orientation", orientation);
        image.jpegsave(path("turned").c_str(),
                       VImage::option()->set("Q", 100)->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_OFF));
        const ImageSize size = orientation < 5 ? ImageSize{96, 64} : ImageSize{64, 96};
        EXPECT_EQ(readImageSize(open("turned")), size);
        prepareUserPhoto(open("turned"), path("prepared"), {}, 0);
        for (const char* name : {"turned", "prepared"}) {
            const Bitmap bitmap = decode(name);
            ASSERT_EQ(bitmap.size(), size) << name;
            const auto& corners = upright[size_t(orientation) - 1];
            const int right = size.width - 8, bottom = size.height - 8;
            EXPECT_TRUE(isNear(at(bitmap, 7, 7), corners[0], 6)) << name;
            EXPECT_TRUE(isNear(at(bitmap, right, 7), corners[1], 6)) << name;
            EXPECT_TRUE(isNear(at(bitmap, 7, bottom), corners[2], 6)) << name;
            EXPECT_TRUE(isNear(at(bitmap, right, bottom), corners[3], 6)) << name;
        }
    }
}

TEST_F(ImageTest, EveryKindOfFileBecomesPremultipliedRgba) {
    const VImage orange = flat(40, 30, {255, 128, 0}, VIPS_INTERPRETATION_sRGB);
    const Pixel expected{255, 128, 0, 255};
    for (const char* suffix : {".png", ".jpg[Q=100]", ".webp[lossless]", ".gif", ".tif", ".avif[lossless]"}) {
        orange.write_to_file(path(std::string("orange") + suffix).c_str());
        const std::string name = "orange" + std::string(suffix).substr(0, std::string(suffix).find('['));
        EXPECT_TRUE(isNear(at(decode(name), 20, 15), expected, 4)) << name;
    }
    flat(40, 30, {65535, 32896, 0, 32896}, VIPS_INTERPRETATION_RGB16, VIPS_FORMAT_USHORT)
        .pngsave(path("deep.png").c_str());
    EXPECT_TRUE(isNear(at(decode("deep.png"), 20, 15), {128, 64, 0, 128}, 1));
    flat(40, 30, {100}, VIPS_INTERPRETATION_B_W).pngsave(path("grey.png").c_str());
    EXPECT_TRUE(isNear(at(decode("grey.png"), 20, 15), {100, 100, 100, 255}, 1));
    flat(40, 30, {200, 51}, VIPS_INTERPRETATION_B_W).pngsave(path("greyAlpha.png").c_str());
    EXPECT_TRUE(isNear(at(decode("greyAlpha.png"), 20, 15), {40, 40, 40, 51}, 1));
    flat(40, 30, {0, 255, 255, 0}, VIPS_INTERPRETATION_CMYK).jpegsave(path("cmyk.jpg").c_str());
    const Pixel cmyk = at(decode("cmyk.jpg"), 20, 15);
    EXPECT_GT(cmyk[0], 190);
    EXPECT_LT(cmyk[1], 70);
    EXPECT_LT(cmyk[2], 70);
}

TEST_F(ImageTest, SrgbColoursStayAsTheyAreWithAndWithoutAProfile) {
    for (const Pixel color : {Pixel{120, 72, 20, 255}, Pixel{20, 90, 200, 255}, Pixel{240, 240, 230, 255}}) {
        const VImage image =
            flat(40, 30, {double(color[0]), double(color[1]), double(color[2])}, VIPS_INTERPRETATION_sRGB);
        image.pngsave(path("bare.png").c_str());
        image.pngsave(path("profiled.png").c_str(), VImage::option()->set("profile", "srgb"));
        EXPECT_TRUE(isNear(at(decode("bare.png"), 20, 15), color, 0));
        EXPECT_TRUE(isNear(at(decode("profiled.png"), 20, 15), color, 2));
        EXPECT_TRUE(isNear(at(decode("profiled.png", {.canvas = {64, 64}}), 20, 15), color, 2));
    }
    // Pure red of another profile is another red here.
    flat(40, 30, {200, 60, 60}, VIPS_INTERPRETATION_sRGB)
        .pngsave(path("wide.png").c_str(), VImage::option()->set("profile", "p3"));
    EXPECT_GT(at(decode("wide.png"), 20, 15)[0], 206);
}

TEST_F(ImageTest, DamagedAndForeignFilesAreErrorsThatNameThePhoto) {
    const VImage noise = VImage::gaussnoise(200, 200).cast(VIPS_FORMAT_UCHAR);
    for (const char* name : {"whole.jpg", "whole.png", "whole.webp"}) {
        noise.write_to_file(path(name).c_str());
        write("cut", bytes(name).substr(0, bytes(name).size() * 2 / 3));
        const Error error = errorOf("cut");
        EXPECT_EQ(error.kind(), ErrorKind::Input) << name;
        EXPECT_EQ(error.file(), "holiday.jpg") << name;
        EXPECT_FALSE(error.message().empty());
        EXPECT_THROW(prepareUserPhoto(open("cut"), path("prepared"), {1, 1}, 100), Error) << name;
        EXPECT_FALSE(std::filesystem::exists(path("prepared"))) << name;
    }
    for (const std::string_view content :
         {"", "no picture at all", "<svg xmlns='http://www.w3.org/2000/svg'/>"}) {
        write("foreign", content);
        EXPECT_EQ(errorOf("foreign").message(), "is not a picture that can be read");
    }
}

TEST_F(ImageTest, PicturesBeyondTheLimitsAreRefusedFromTheirHeader) {
    for (const auto& [isProgressive, marker, side] :
         {std::tuple{false, "\xff\xc0", "\xfd\xe8"}, {true, "\xff\xc2", "\x4a\x38"}}) {  // 65000, 19000
        quarters().jpegsave(path("small.jpg").c_str(), VImage::option()->set("interlace", isProgressive));
        std::string jpeg = bytes("small.jpg");
        write("bomb", jpeg.replace(jpeg.find(marker) + 5, 4, std::string(side) + side));
        EXPECT_NE(errorOf("bomb").message().find("too large"), std::string::npos) << isProgressive;
        EXPECT_THROW(readImageSize(open("bomb")), Error) << isProgressive;
    }
    quarters().pngsave(path("small.png").c_str());
    EXPECT_THROW(decode("small.png", {.canvas = {40000, 40000}}), Error);
    static_assert(limitOf("maxDecodedPixels") == 8000 * 8000);
    EXPECT_EQ(decode("small.png", {.canvas = {7999, 8001}}).width, 7999) << "one pixel less";
    EXPECT_EQ(decode("small.png", {.canvas = {8000, 8000}}).width, 8000);
    EXPECT_THROW(decode("small.png", {.canvas = {64'000'001, 1}}), Error) << "one more";
}

TEST_F(ImageTest, TextsInAPngCostNothing) {
    quarters().pngsave(path("small.png").c_str());
    const std::string small = bytes("small.png");
    constexpr size_t afterHeader = 33;
    const long before = peakMegabytes();
    // A text that claims a gigabyte which is not there.
    write("claims.png", small.substr(0, afterHeader) +
                            test::pngChunk("iTXt", "a").replace(0, 4, test::bigEndian(0x3fffffff)));
    EXPECT_EQ(errorOf("claims.png").kind(), ErrorKind::Input);
    // Texts that unpack to 400 MB, and the picture after them.
    const std::string plain(4'000'000, 'a');
    std::string packed(::compressBound(plain.size()), '\0');
    uLongf size = packed.size();
    ::compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(plain.data()),
               plain.size());
    const std::string text = test::pngChunk("zTXt", std::string("Comment\0\0", 9) + packed.substr(0, size));
    std::string texts;
    for (int i = 0; i < 100; ++i) texts += text;
    write("texts.png", std::string(small).insert(afterHeader, texts));
    EXPECT_EQ(decode("texts.png").rgba, decode("small.png").rgba);
    EXPECT_LT(peakMegabytes() - before, 100);
}

TEST_F(ImageTest, ShrinkingAveragesAndKeepsTheProportions) {
    std::vector<uint8_t> checks(640 * 360);
    for (size_t i = 0; i < checks.size(); ++i) checks[i] = (i % 640 + i / 640) % 2 ? 255 : 0;
    VImage::new_from_memory(checks.data(), checks.size(), 640, 360, 1, VIPS_FORMAT_UCHAR)
        .pngsave(path("checks.png").c_str());
    const Bitmap stretched = decode("checks.png", {.canvas = {64, 64}});
    EXPECT_EQ(stretched.size(), (ImageSize{64, 64}));
    for (int i = 4; i < 60; ++i) EXPECT_TRUE(isNear(at(stretched, i, i), {128, 128, 128, 255}, 3));
    EXPECT_EQ(decode("checks.png", {.canvas = {1024, 512}}).size(), (ImageSize{1024, 512}));
    EXPECT_EQ(decode("checks.png", {.maxLongSide = 320}).size(), (ImageSize{320, 180}));
    EXPECT_EQ(decode("checks.png", {.maxLongSide = 1000}).size(), (ImageSize{640, 360}));
}

TEST_F(ImageTest, PhotosAreCutAroundTheFocusAndKeepTheirAlpha) {
    const PhotoCrop middle{PhotoCrop::Kind::Focus, 0.5, 0.5};
    quarters().pngsave(path("quarters.png").c_str());
    const auto prepare = [&](const char* name, Aspect aspect, int longSide, const PhotoCrop& crop) {
        return prepareUserPhoto(open("quarters.png"), path(name), aspect, longSide, {}, crop);
    };
    EXPECT_EQ(prepare("square", {1, 1}, 0, middle), (ImageSize{64, 64}));
    const Bitmap square = decode("square");
    EXPECT_TRUE(isNear(at(square, 31, 31), red, 0));
    EXPECT_TRUE(isNear(at(square, 32, 32), white, 0));
    EXPECT_EQ(prepare("banner", {3, 1}, 48, middle), (ImageSize{48, 16}));
    EXPECT_TRUE(isNear(at(decode("banner"), 23 - 4, 4), red, 4));
    EXPECT_EQ(prepare("same", {0, 5}, 4000, middle), (ImageSize{96, 64}));
    EXPECT_EQ(prepare("right", {1, 1}, 0, {PhotoCrop::Kind::Focus, 0.9, 0}), (ImageSize{64, 64}));
    EXPECT_TRUE(isNear(at(decode("right"), 15, 10), red, 0)) << "48 to 96 are green";
    EXPECT_TRUE(isNear(at(decode("right"), 16, 10), green, 0));

    flat(40, 40, {255, 0, 0, 51}, VIPS_INTERPRETATION_sRGB).webpsave(path("glass.webp").c_str());
    prepareUserPhoto(open("glass.webp"), path("glass"), {1, 1}, 0);
    EXPECT_TRUE(isNear(at(decode("glass"), 20, 20), {51, 0, 0, 51}, 2));
}

TEST_F(ImageTest, PartsOfAPhotoAreOfItsUprightSelf) {
    VImage image = quarters().copy();
    image.set("orientation", 6);  // upright: blue and red over white and green, 64 x 96
    image.jpegsave(path("turned").c_str(),
                   VImage::option()->set("Q", 100)->set("subsample_mode", VIPS_FOREIGN_SUBSAMPLE_OFF));
    const auto prepare = [&](Aspect aspect, const PhotoCrop& crop) {
        return prepareUserPhoto(open("turned"), path("part"), aspect, 0, {}, crop);
    };
    EXPECT_EQ(prepare({}, {PhotoCrop::Kind::Part, 0.5, 0, 0.5, 0.5}), (ImageSize{32, 48}));
    const Bitmap part = decode("part");
    EXPECT_TRUE(isNear(at(part, 8, 8), red, 6));
    EXPECT_TRUE(isNear(at(part, 24, 40), red, 6));
    EXPECT_EQ(prepare({2, 1}, {PhotoCrop::Kind::Part, 0.5, 0.5, 0.5, 0.5}), (ImageSize{32, 16}))
        << "of the part, the template takes what has its shape";
    EXPECT_TRUE(isNear(at(decode("part"), 16, 8), green, 6));
    EXPECT_EQ(prepare({}, {PhotoCrop::Kind::Part, 1, 1, 1e-9, 1e-9}), (ImageSize{1, 1}));
}

TEST_F(ImageTest, TurnedPartsShowEachPixelOfThePhotoWhereItBelongs) {
    // Its colours say where they are: red grows to the right, green downwards.
    constexpr int width = 240, height = 120;
    std::vector<uint8_t> places(size_t{width * height * 3});
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            places[size_t(y * width + x) * 3] = uint8_t(x);
            places[size_t(y * width + x) * 3 + 1] = uint8_t(2 * y);
        }
    VImage::new_from_memory(places.data(), places.size(), width, height, 3, VIPS_FORMAT_UCHAR)
        .copy(VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB))
        .pngsave(path("places.png").c_str());
    struct Case {
        double x, y, width, height, angle;
        Aspect aspect;
        int longSide;
        int tolerance;
    };
    for (const Case& wanted :
         {Case{0.25, 0.25, 0.5, 0.5, 0.001, {}, 0, 1}, Case{0.25, 0.25, 0.5, 0.5, 13.75, {}, 0, 1},
          Case{0.3, 0.2, 0.4, 0.6, -151, {3, 4}, 0, 1},
          // Its corners lie outside, where the edge goes on.
          Case{0, 0, 1, 1, 13.75, {}, 0, 2}, Case{0.5, 0.4, 0.9, 0.9, 60, {1, 1}, 0, 2},
          Case{0.375, -0.5, 0.25, 2, 90, {}, 0, 0},  // all of it, on its side
          Case{0.25, 0.25, 0.5, 0.5, -90, {}, 0, 0}, Case{0.25, 0.25, 0.5, 0.5, 180, {}, 0, 0},
          Case{0.25, 0.25, 0.5, 0.5, 13.75, {}, 60, 2}}) {
        SCOPED_TRACE(testing::PrintToString(wanted.angle) + " " + testing::PrintToString(wanted.width));
        const PhotoCrop crop{PhotoCrop::Kind::Part, wanted.x,      wanted.y,
                             wanted.width,          wanted.height, wanted.angle};
        const ImageSize size =
            prepareUserPhoto(open("places.png"), path("part"), wanted.aspect, wanted.longSide, {}, crop);
        double across = wanted.width * width, down = wanted.height * height;
        if (wanted.aspect.width > 0) {
            across = std::min(across, down * wanted.aspect.width / wanted.aspect.height);
            down = across * wanted.aspect.height / wanted.aspect.width;
        }
        const double factor = wanted.longSide > 0 ? wanted.longSide / across : 1;
        EXPECT_EQ(size, (ImageSize{int(std::lround(across * factor)), int(std::lround(down * factor))}));
        const Bitmap part = decode("part");
        ASSERT_EQ(part.size(), size);
        const double turn = wanted.angle * M_PI / 180;
        int wrong = 0;
        for (int row = 0; row < size.height; ++row)
            for (int column = 0; column < size.width; ++column) {
                const double right = (column + 0.5 - size.width / 2.0) / factor;
                const double below = (row + 0.5 - size.height / 2.0) / factor;
                const double x =
                    (wanted.x + wanted.width / 2) * width + right * cos(turn) - below * sin(turn);
                const double y =
                    (wanted.y + wanted.height / 2) * height + right * sin(turn) + below * cos(turn);
                const double rightward = std::clamp(x - 0.5, 0.0, width - 1.0);
                const double downward = 2 * std::clamp(y - 0.5, 0.0, height - 1.0);
                const Pixel shown = at(part, column, row);
                wrong += std::abs(shown[0] - rightward) > wanted.tolerance + 0.5 ||
                         std::abs(shown[1] - downward) > wanted.tolerance + 0.5 || shown[2] != 0;
            }
        EXPECT_EQ(wrong, 0) << "pixels";
    }
}

TEST_F(ImageTest, WhatCatchesTheEyeStaysWhenNobodySaysWhere) {
    const auto dotAt = [&](int x) {
        VImage photo = flat(600, 200, {70, 90, 110}, VIPS_INTERPRETATION_sRGB).copy_memory();
        photo.draw_circle({250, 60, 20}, x, 100, 25, VImage::option()->set("fill", true));
        photo.pngsave(path("dot.png").c_str());
        prepareUserPhoto(open("dot.png"), path("kept"), {1, 1}, 0);
        const Bitmap kept = decode("kept");
        int dots = 0;
        for (int column = 0; column < kept.width; ++column) dots += at(kept, column, 100)[0] > 200;
        return dots;
    };
    for (const int x : {60, 300, 520}) EXPECT_GE(dotAt(x), 50) << x;
}

/// A drawn face before a plain wall: `x`, `y` its middle, `size` the width of the head, in pixels.
Bitmap faceOnWall(int width, int height, double x, double y, double size) {
    struct Patch {
        double x, y, across, down, grey;
    };
    // Head, hair, forehead, brows, eyes, nose and its shadow, mouth; in parts of the size.
    constexpr Patch patches[] = {{0, 0, 0.5, 0.68, 205},        {0, -0.45, 0.52, 0.35, 60},
                                 {0, -0.2, 0.36, 0.28, 205},    {-0.2, -0.12, 0.11, 0.03, 70},
                                 {0.2, -0.12, 0.11, 0.03, 70},  {-0.2, -0.03, 0.09, 0.045, 60},
                                 {0.2, -0.03, 0.09, 0.045, 60}, {0, 0.08, 0.045, 0.12, 225},
                                 {0, 0.2, 0.09, 0.03, 150},     {0, 0.36, 0.17, 0.04, 110}};
    Bitmap picture(width, height);
    uint8_t* out = picture.rgba.data();
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column) {
            double value = 120;
            for (const Patch& patch : patches) {
                const double across = ((column - x) / size - patch.x) / patch.across;
                const double down = ((row - y) / size - patch.y) / patch.down;
                const double covered = (1 - std::hypot(across, down)) * 4 + 0.5;
                value += (patch.grey - value) * std::clamp(covered, 0.0, 1.0);
            }
            for (int channel = 0; channel < 4; ++channel) *out++ = channel < 3 ? uint8_t(value) : 255;
        }
    return picture;
}

TEST_F(ImageTest, FacesAreNotCut) {
    struct Case {
        int width, height;
        double x, y, size;
        Aspect aspect;
    };
    for (const Case& photo :
         {Case{400, 300, 320, 150, 80, {9, 16}}, Case{400, 300, 90, 120, 100, {1, 2}},
          Case{1500, 2000, 700, 420, 500, {16, 9}}, Case{300, 400, 150, 300, 45, {3, 1}}}) {
        Bitmap picture = faceOnWall(photo.width, photo.height, photo.x, photo.y, photo.size);
        // A striped sign, which draws the eye more than a face.
        const int sign = photo.width / 6;
        const int signX = photo.x > photo.width / 2.0 ? 2 : photo.width - sign - 2;
        const int signY = photo.y > photo.height / 2.0 ? 2 : photo.height - sign - 2;
        for (int y = signY; y < signY + sign; ++y)
            for (int x = signX; x < signX + sign; ++x) {
                uint8_t* pixel = &picture.rgba[(size_t(y) * size_t(photo.width) + size_t(x)) * 4];
                const bool isRed = (x - signX) * 8 / sign % 2;
                pixel[0] = 255, pixel[1] = isRed ? 30 : 220, pixel[2] = 20;
            }
        writePng(path("person.png"), picture);
        prepareUserPhoto(open("person.png"), path("kept"), photo.aspect, 0);
        const Bitmap kept = decode("kept");
        const Pixel wall{120, 120, 120, 255};
        int bright = 0;
        for (int x = 0; x < kept.width; ++x)
            for (int y = 0; y < kept.height; ++y) bright += at(kept, x, y)[2] > 190;
        EXPECT_GT(bright, 0.35 * photo.size * photo.size) << photo.width << " x " << photo.height;
        for (int x = 0; x < kept.width; x += 3) EXPECT_TRUE(isNear(at(kept, x, 0), wall, 8)) << x << ": hair";
        for (int y = 0; y < kept.height; y += 3) {
            EXPECT_TRUE(isNear(at(kept, 0, y), wall, 8)) << y << ": an ear";
            EXPECT_TRUE(isNear(at(kept, kept.width - 1, y), wall, 8)) << y << ": an ear";
        }
    }
}

TEST(PhotoCropTest, HeadsStayWholeWhereTheyCan) {
    // A portrait: the face in the upper third, hair above it.
    const ImageSize portrait{300, 400};
    const Face face{110, 60, 80, 80};
    for (const Aspect aspect : {Aspect{16, 9}, {4, 3}, {1, 1}, {2, 1}, {9, 16}, {1, 3}}) {
        const PixelRectangle middle = croppedPart(portrait, aspect, {});
        const auto part = partWithHeads(portrait, middle, {face});
        ASSERT_TRUE(part);
        EXPECT_EQ(part->size(), middle.size());
        EXPECT_LE(part->y, 60 - 40) << aspect.width << ":" << aspect.height << " cuts the hair";
        EXPECT_GE(part->y + part->height, 60 + 80);
        EXPECT_LE(part->x, 110);
        EXPECT_GE(part->x + part->width, 110 + 80);
        EXPECT_TRUE(part->y >= 0 && part->y + part->height <= 400 && part->x >= 0 &&
                    part->x + part->width <= 300);
    }
    // A strip lower than the head keeps the face.
    const auto strip = partWithHeads(portrait, croppedPart(portrait, {3, 1}, {}), {face});
    EXPECT_LE(strip->y, 60);
    EXPECT_GE(strip->y + strip->height, 60 + 80);
    // Of a group that does not fit the larger face stays, and whom there is room for; passers-by do not
    // count.
    const ImageSize group{900, 300};
    const PixelRectangle square = croppedPart(group, {1, 1}, {});
    const auto kept =
        partWithHeads(group, square, {{700, 100, 80, 80}, {560, 100, 70, 70}, {60, 100, 70, 70}});
    EXPECT_LE(kept->x, 560);
    EXPECT_GE(kept->x + kept->width, 780);
    EXPECT_EQ(partWithHeads(group, square, {{700, 100, 80, 80}, {580, 100, 20, 20}})->x, 740 - 150);
    EXPECT_FALSE(partWithHeads(group, square, {}));
}

TEST_F(ImageTest, PngFilesHoldTheBytesAsTheyAre) {
    // The first colour is brighter than its alpha allows: resolved frames may hold such pixels.
    const std::vector<uint8_t> pixels{200, 10, 20, 100, 1, 2, 3, 4,  //
                                      5,   6,  7,  8,   9, 0, 0, 0};
    writePng(path("down.png"), ImageView(2, 2, pixels.data(), 8));
    writePng(path("up.png"), ImageView(2, 2, pixels.data() + 8, -8));
    size_t size = 0;
    const auto read = [&](const char* name) {
        void* memory = VImage::pngload(path(name).c_str()).write_to_memory(&size);
        const std::vector<uint8_t> result(static_cast<uint8_t*>(memory),
                                          static_cast<uint8_t*>(memory) + size);
        g_free(memory);
        return result;
    };
    EXPECT_EQ(read("down.png"), pixels);
    EXPECT_EQ(read("up.png"), (std::vector<uint8_t>{5, 6, 7, 8, 9, 0, 0, 0, 200, 10, 20, 100, 1, 2, 3, 4}));
    const std::string first = bytes("down.png");
    writePng(path("down.png"), ImageView(2, 2, pixels.data(), 8));
    EXPECT_EQ(bytes("down.png"), first);
    EXPECT_THROW(writePng(path("none/down.png"), ImageView(2, 2, pixels.data(), 8)), Error);

    Bitmap half(16, 16);
    for (size_t i = 0; i < half.rgba.size(); i += 4) half.rgba[i] = half.rgba[i + 3] = 128;
    writeJpeg(path("half.jpg"), half, 95);
    EXPECT_TRUE(isNear(at(decode("half.jpg"), 8, 8), {255, 127, 127, 255}, 3));
}

Bitmap filled(int width, int height, Pixel color) {
    Bitmap bitmap(width, height);
    for (size_t i = 0; i < bitmap.rgba.size(); ++i) bitmap.rgba[i] = uint8_t(color[i % 4]);
    return bitmap;
}

TEST(PhotoFilterTest, LengthsBeyondHalfTheShorterSideCountAsThat) {
    const Bitmap photo = filled(128, 64, blue);
    const Bitmap round = drawPhotoFilter({"circularAndStroke", 32, 32, {1, 0, 0, 1}}, photo);
    EXPECT_EQ(at(round, 2, 2)[3], 0);
    EXPECT_EQ(at(round, 64, 4), red);
    const auto start = std::chrono::steady_clock::now();
    for (const float length : {33.0f, 1e4f, 1e25f, INFINITY}) {
        EXPECT_EQ(drawPhotoFilter({"circularAndStroke", length, length, {1, 0, 0, 1}}, photo).rgba,
                  round.rgba)
            << length;
        EXPECT_EQ(at(drawPhotoFilter({"roundRect", length, 0, {}}, photo), 2, 2)[3], 0) << length;
    }
    for (const float length : {-1.0f, NAN})
        EXPECT_EQ(drawPhotoFilter({"circularAndStroke", length, 8, {1, 0, 0, 1}}, photo).rgba, photo.rgba);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60)) << "it hangs";
}

TEST(PhotoFilterTest, UnknownFiltersDrawNothingAndPicturesLieOverPhotos) {
    const Bitmap photo = filled(64, 64, blue), overlay = filled(64, 64, {64, 0, 0, 128});
    EXPECT_EQ(drawPhotoFilter({"sepia", 9, 9, {}}, photo).rgba, Bitmap(64, 64).rgba);
    const Bitmap both = drawPhotoFilter({"imageSynthesis", 0, 0, {}}, photo, &overlay);
    EXPECT_TRUE(isNear(at(both, 10, 10), {64, 0, 127, 255}, 1));
}

TEST_F(ImageTest, WhatIsKeptOfAPictureGoesWithItsFile) {
    const auto settle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(60)); };
    const auto save = [&](uint8_t level) {
        Bitmap grey(20, 20);
        std::fill(grey.rgba.begin(), grey.rgba.end(), level);
        for (size_t alpha = 3; alpha < grey.rgba.size(); alpha += 4) grey.rgba[alpha] = 255;
        writePng(path("grey.png"), grey);
        const std::string content = bytes("grey.png");
        write("same.png", content);  // the same file with another content
    };
    keepDecodedImages(64 * 1024);
    for (const uint8_t level : {30, 60, 90}) {
        save(level);
        for (int turn = 0; turn < 2; ++turn) {
            for (int side = 8; side < 40; side += 8) {
                const Bitmap picture = decode("same.png", {.canvas = {side, side}});
                EXPECT_EQ(picture.size(), (ImageSize{side, side}));
                EXPECT_TRUE(isNear(at(picture, 3, 3), {level, level, level, 255}, 1)) << turn;
            }
            settle();
        }
    }
    keepDecodedImages(0);
}

}  // namespace
}  // namespace platform
