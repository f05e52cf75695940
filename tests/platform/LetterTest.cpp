// Letters as atlases and meshes.
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "platform/font/Letters.h"

namespace platform {
namespace {

LetterText text(const std::string& letters, float lineLength = 0,
                TextAlignment alignment = TextAlignment::Left) {
    return {letters, {"DejaVu Sans", nullptr, 2}, alignment, lineLength};
}

struct Box {
    float left = 1e9f, right = -1e9f, bottom = 1e9f, top = -1e9f, back = 1e9f, front = -1e9f;
};

Box boxOf(const std::vector<LetterVertex>& triangles) {
    Box box;
    for (const LetterVertex& at : triangles) {
        box.left = std::min(box.left, at.x);
        box.right = std::max(box.right, at.x);
        box.bottom = std::min(box.bottom, at.y);
        box.top = std::max(box.top, at.y);
        box.back = std::min(box.back, at.z);
        box.front = std::max(box.front, at.z);
    }
    return box;
}

std::array<double, 3> normalOf(const LetterVertex* corner) {
    const std::array<double, 3> a{corner[1].x - corner[0].x, corner[1].y - corner[0].y,
                                  corner[1].z - corner[0].z},
        b{corner[2].x - corner[0].x, corner[2].y - corner[0].y, corner[2].z - corner[0].z};
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// Area of what faces the viewer, and volume by the divergence theorem: negative where a face is turned.
struct Measure {
    double frontArea = 0, volume = 0;
};

Measure measure(const SolidLetters& letters) {
    Measure result;
    for (size_t i = 0; i < letters.triangles.size(); i += 3) {
        const LetterVertex* corner = &letters.triangles[i];
        const auto normal = normalOf(corner);
        EXPECT_GE(normal[0] * corner->normalX + normal[1] * corner->normalY + normal[2] * corner->normalZ, 0)
            << "the corners run counter-clockwise around the normal";
        if (corner->normalZ > 0.5f) result.frontArea += normal[2] / 2;
        result.volume += (corner->x * normal[0] + corner->y * normal[1] + corner->z * normal[2]) / 6;
    }
    return result;
}

TEST(SolidLetters, AreClosedAroundTheirHolesInBothKindsOfFonts) {
    for (const char* font : {"DejaVu Sans", "Noto Sans CJK SC"}) {  // quadratic and cubic curves
        for (const char* letters : {"O", "l", "R8g", "家"}) {
            LetterText written = text(letters);
            written.font.name = font;
            const Measure solid = measure(solidLetters(written, 0.5f));
            EXPECT_GT(solid.frontArea, 0.1) << font << letters;
            EXPECT_NEAR(solid.volume, solid.frontArea * 0.5, solid.frontArea * 0.02) << font << letters;
        }
    }
    const double full = measure(solidLetters(text("●"), 1)).frontArea,
                 ring = measure(solidLetters(text("○"), 1)).frontArea;
    EXPECT_LT(ring, full / 2) << "a hole stays open";
}

TEST(SolidLetters, HaveTheSizeOfTheirFontAroundTheOrigin) {
    const SolidLetters letters = solidLetters(text("HH\nHHHH"), 0.5f);
    const Box box = boxOf(letters.triangles);
    EXPECT_NEAR(box.front, 0.25, 1e-5);
    EXPECT_NEAR(box.back, -0.25, 1e-5);
    EXPECT_NEAR(box.left + box.right, 0, 0.05);
    EXPECT_NEAR(box.top - box.bottom, letters.block.height / 2 + 2 * 0.729, 0.02) << "a line and a capital";
    EXPECT_NEAR(letters.block.width, 4 * 2 * 0.752, 0.02) << "DejaVu's H is 0.752 em wide";
    EXPECT_NEAR(letters.block.height, 2 * 2 * 1.164, 0.1);
}

constexpr int width = 900, height = 320;

/// The text as drawn texts show it, its block in the middle, an em of 96 pixels.
Bitmap drawn(const LetterText& letters) {
    TextTextureDescription description;
    description.layout = {.text = letters.text, .font = letters.font, .alignment = letters.alignment};
    description.drawRect = {0, 0, width, height};
    description.horizontalPlacement = description.verticalPlacement = TextPlacement::Middle;
    description.textColor = {1, 1, 1, 1};
    return drawText(description, width, height, 1);
}

/// What a triangle covers, in the same place and size; `color` gives a pixel from u and v.
template <typename ColorAt>
void paint(const std::vector<LetterVertex>& triangles, Bitmap& bitmap, ColorAt color) {
    for (size_t i = 0; i < triangles.size(); i += 3) {
        const LetterVertex *a = &triangles[i], *b = a + 1, *c = a + 2;
        if (a->normalZ < 0.5f) continue;
        const auto cross = [](const LetterVertex& from, const LetterVertex& to, double x, double y) {
            return (double(to.x) - double(from.x)) * (y - double(from.y)) -
                   (double(to.y) - double(from.y)) * (x - double(from.x));
        };
        const double area = cross(*a, *b, double(c->x), double(c->y));
        const auto [left, right] = std::minmax({a->x, b->x, c->x});
        const auto [bottom, top] = std::minmax({a->y, b->y, c->y});
        for (int row = std::max(0, int(height / 2 - top));
             row < std::min(height, int(height / 2 - bottom) + 2); ++row)
            for (int column = std::max(0, int(width / 2 + left) - 1);
                 column < std::min(width, int(width / 2 + right) + 2); ++column) {
                const double x = column + 0.5 - width / 2, y = height / 2 - row - 0.5;
                const double shareC = cross(*a, *b, x, y) / area, shareA = cross(*b, *c, x, y) / area;
                if (shareC < 0 || shareA < 0 || shareA + shareC > 1) continue;
                const double shareB = 1 - shareA - shareC;
                const auto mix = [&](float LetterVertex::*part) {
                    return shareA * double(a->*part) + shareB * double(b->*part) + shareC * double(c->*part);
                };
                const std::array<uint8_t, 4> texel = color(mix(&LetterVertex::u), mix(&LetterVertex::v));
                uint8_t* pixel = &bitmap.rgba[size_t(row * width + column) * 4];
                for (size_t k = 0; k < 4; ++k) pixel[k] = std::max(pixel[k], texel[k]);
            }
    }
}

auto texelOf(const Bitmap& atlas) {
    return [&atlas](double u, double v) {
        const uint8_t* pixel = atlas.pixel(std::min(int(u * atlas.width), atlas.width - 1),
                                           std::min(int(v * atlas.height), atlas.height - 1));
        return std::array{pixel[0], pixel[1], pixel[2], pixel[3]};
    };
}

/// How much two pictures have in common, 0 to 1: 1 less the difference, as a share of what either shows.
double likeness(const Bitmap& a, const Bitmap& b) {
    double difference = 0, sum = 0;
    for (size_t i = 0; i < a.rgba.size(); ++i) {
        difference += std::abs(a.rgba[i] - b.rgba[i]);
        sum += std::max(a.rgba[i], b.rgba[i]);
    }
    return sum > 0 ? 1 - difference / sum : 0;
}

TEST(Letters, OfAnyScriptStandWhereDrawnTextsHaveThem) {
    for (const char* written :
         {"Hello AVA", "有志者事", "مرحبا بالعالم", "नमस्ते क्षत्रिय", "🎉❤️👨‍👩‍👧",
          "Hi 你 مر नि🎂", "one\ntwo lines", "שלום 123"}) {
        LetterText letters = text(written, 0, TextAlignment::Center);
        letters.font.size = 96;
        const Bitmap expected = drawn(letters);
        const FlatLetters flat = flatLetters(letters);
        Bitmap shown(width, height);
        paint(flat.triangles, shown, texelOf(flat.atlas));
        paint(flat.coloredTriangles, shown, texelOf(flat.atlas));
        EXPECT_GT(likeness(shown, expected), 0.85) << written;
        EXPECT_TRUE(flat.leftOut.empty());

        const SolidLetters solid = solidLetters(letters, 20);
        shown = Bitmap(width, height);
        paint(solid.triangles, shown, [](double, double) {
            return std::array<uint8_t, 4>{255, 255, 255, 255};
        });
        paint(solid.coloredTriangles, shown, texelOf(solid.atlas));
        EXPECT_GT(likeness(shown, expected), 0.85) << written;
        EXPECT_TRUE(solid.leftOut.empty());
    }
}

TEST(FlatLetters, ThatAreJoinedOverlapNowhere) {
    // Such pixels would show in a half transparent text.
    const auto doublyDrawn = [](const char* written) {
        LetterText letters = text(written);
        letters.font.size = 96;
        const FlatLetters flat = flatLetters(letters);
        Bitmap all(width, height);
        int twice = 0;
        for (size_t i = 0; i < flat.triangles.size(); i += 6) {
            Bitmap one(width, height);
            paint({flat.triangles.begin() + ptrdiff_t(i), flat.triangles.begin() + ptrdiff_t(i) + 6}, one,
                  texelOf(flat.atlas));
            for (size_t pixel = 3; pixel < one.rgba.size(); pixel += 4) {
                twice += one.rgba[pixel] > 200 && all.rgba[pixel] > 200;
                all.rgba[pixel] = std::max(all.rgba[pixel], one.rgba[pixel]);
            }
        }
        return twice;
    };
    for (const char* written : {"مرحبا", "नमस्ते", "AVA ffi", "Å"})
        EXPECT_EQ(doublyDrawn(written), 0) << written;
}

TEST(Letters, ThatCannotBeDrawnAreNamedOnce) {
    const LetterText letters = text("a\U0010FFFFb\U0010FFFF");
    EXPECT_EQ(flatLetters(letters).leftOut, std::vector<char32_t>{0x10FFFF});
    EXPECT_EQ(solidLetters(letters, 1).leftOut, std::vector<char32_t>{0x10FFFF});
    EXPECT_EQ(flatLetters(letters).block.width, flatLetters(text("ab")).block.width);
}

TEST(SolidLetters, OfEmojiAreClosedAndCutAlongTheirShape) {
    const SolidLetters emoji = solidLetters(text("❤️"), 0.5f);
    SolidLetters whole = emoji;
    whole.triangles.insert(whole.triangles.end(), emoji.coloredTriangles.begin(),
                           emoji.coloredTriangles.end());
    const Measure solid = measure(whole);
    const Box box = boxOf(emoji.triangles);
    const double square = double(box.right - box.left) * double(box.top - box.bottom);
    EXPECT_NEAR(solid.frontArea, square * 0.7, square * 0.15) << "a heart and not its box";
    EXPECT_NEAR(solid.volume, solid.frontArea * 0.5, solid.frontArea * 0.02);
}

TEST(FlatLetters, BreakAndAlignTheirLines) {
    const auto heightOf = [](const LetterText& written) { return flatLetters(written).block.height; };
    const float line = heightOf(text("H"));
    EXPECT_FLOAT_EQ(heightOf(text("some words")), line);
    EXPECT_FLOAT_EQ(heightOf(text("some words", 7)), 2 * line);
    EXPECT_FLOAT_EQ(heightOf(text("somewords", 7)), 2 * line) << "a word too long is broken";
    EXPECT_FLOAT_EQ(heightOf(text("有志者事竟成", 7)), 2 * heightOf(text("有")))
        << "ideographs break anywhere";
    EXPECT_LE(flatLetters(text("some words", 7)).block.width, 7);
    const Box left = boxOf(flatLetters(text("i\nHHHH")).triangles);
    std::vector<LetterVertex> first = flatLetters(text("i\nHHHH", 0, TextAlignment::Right)).triangles;
    first.resize(6);
    EXPECT_GT(boxOf(first).left, 2.0f) << "at the right";
    EXPECT_LT(left.left, -2.5f);
    EXPECT_LT(flatLetters(text("AV")).block.width, flatLetters(text("AA")).block.width * 0.99f) << "kerned";
}

TEST(FlatLetters, KeepTheirPicturesApart) {
    const FlatLetters letters = flatLetters(text("abcabc"));
    ASSERT_EQ(letters.triangles.size(), 6u * 6);
    EXPECT_EQ(letters.triangles[0].u, letters.triangles[18].u) << "a letter is drawn once";
    for (const LetterVertex& corner : letters.triangles) {
        const int x = std::min(int(corner.u * float(letters.atlas.width)), letters.atlas.width - 1);
        const int y = std::min(int(corner.v * float(letters.atlas.height)), letters.atlas.height - 1);
        EXPECT_EQ(letters.atlas.pixel(x, y)[3], 0) << "clear at the corners";
    }
    EXPECT_TRUE(std::ranges::any_of(letters.atlas.rgba, [](uint8_t value) { return value == 255; }));
}

TEST(FlatLetters, TakeAnyText) {
    EXPECT_TRUE(flatLetters(text("")).triangles.empty());
    EXPECT_TRUE(flatLetters(text("\n \t\n")).triangles.empty());
    EXPECT_EQ(flatLetters(text("a\xff"
                               "b\U0010FFFF"))
                      .triangles.size() /
                  6,
              3u)
        << "a replacement in the middle";
    std::string many;
    for (int letter = 0; letter < 4096; ++letter) {
        const int point = 0x4E00 + letter;
        many += {char(0xE0 | point >> 12), char(0x80 | (point >> 6 & 63)), char(0x80 | (point & 63))};
    }
    const FlatLetters manyLetters = flatLetters(text(many, 100));
    EXPECT_LE(manyLetters.atlas.height, 4096);
    EXPECT_TRUE(manyLetters.leftOut.empty()) << "smaller pictures make room for all";
    EXPECT_EQ(manyLetters.triangles.size(), 6u * 4096);
    LetterText strange = text("a");
    strange.font.name = "No Such Font";
    EXPECT_EQ(flatLetters(strange).triangles.size(), 6u);
}

std::string pathOfFont(const char* family) {
    FcPattern* wanted = FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, family, nullptr);
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result{};
    FcPattern* font = FcFontMatch(nullptr, wanted, &result);
    FcChar8* file = nullptr;
    FcPatternGetString(font, FC_FILE, 0, &file);
    const std::string path = reinterpret_cast<const char*>(file);
    FcPatternDestroy(font);
    FcPatternDestroy(wanted);
    return path;
}

std::string contentOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

const FontFile* fontIn(const std::filesystem::path& file) {
    FileGate gate;
    gate.allowFile(file);
    return openFontFile(gate.open(file).file);
}

TEST(SolidLetters, TakeFontFilesOfAnyKind) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / uniqueIdentifier();
    std::ofstream(file) << "soon a font";
    const std::string good = contentOf(pathOfFont("DejaVu Sans Mono"));
    const auto widthWith = [&](const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
        LetterText written = text("WWWW");
        written.font = {"", fontIn(file), 2};
        return solidLetters(written, 0.5f).block.width;
    };
    EXPECT_NEAR(widthWith(good), 4 * 2 * 0.602, 0.02) << "the file's own letters";
    const float otherwise = widthWith("no font");
    EXPECT_GT(otherwise, 4 * 2 * 0.7f) << "the system's default instead";
    std::mt19937 random(3);
    for (int round = 0; round < 20; ++round) {
        std::string damaged = good.substr(0, round % 2 ? good.size() : random() % good.size());
        for (int i = 0; i < 200; ++i) damaged[random() % damaged.size()] = char(random());
        EXPECT_GE(widthWith(damaged), 0) << round;
    }
    std::filesystem::remove(file);
}

/// The number of units an em of a TrueType font, in its table "head".
void setUnitsPerEm(std::string& font, int units) {
    const auto byte = [&](size_t at) { return size_t(uint8_t(font[at])); };
    const size_t entry = font.find("head");
    const size_t table =
        byte(entry + 8) << 24 | byte(entry + 9) << 16 | byte(entry + 10) << 8 | byte(entry + 11);
    font[table + 18] = char(units >> 8);
    font[table + 19] = char(units);
}

/// So that the installed font of the same name is not taken instead.
void rename(std::string& font) {
    using namespace std::string_literals;
    for (const std::string& name : {"DejaVu"s, "D\0e\0j\0a\0V\0u"s})
        for (size_t at; (at = font.find(name)) != std::string::npos;) font[at] = 'X';
}

TEST(Letters, OfAFontWithGiantLettersAreNamedAndCostLittle) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / uniqueIdentifier();
    std::string font = contentOf(pathOfFont("DejaVu Sans Mono"));
    setUnitsPerEm(font, 16);  // instead of 2048
    rename(font);
    std::ofstream(file, std::ios::binary) << font;
    LetterText giant = text("WWmW@");
    giant.font = {"", fontIn(file), 2};
    EXPECT_EQ(flatLetters(giant).leftOut, (std::vector<char32_t>{'@', 'W', 'm'}));
    const SolidLetters solid = solidLetters(giant, 0.5f);
    EXPECT_GT(solid.block.width, 5 * 2 * 0.6f * 100);
    EXPECT_LT(solid.triangles.size(), 20'000u);
    std::filesystem::remove(file);
}

}  // namespace
}  // namespace platform
