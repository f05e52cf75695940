// Letters as atlases and meshes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"
#include "platform/font/Letters.h"
#include "tests/platform/InstalledFont.h"
#include "tests/platform/TemporaryFolder.h"

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
    for (size_t i = 0; i < letters.letters.corners.size(); i += 3) {
        const LetterVertex* corner = &letters.letters.corners[i];
        const auto normal = normalOf(corner);
        EXPECT_GE(normal[0] * corner->normalX + normal[1] * corner->normalY + normal[2] * corner->normalZ,
                  -1e-4)
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
            const Measure solid = measure(solidLetters(written, {.depth = 0.5f}));
            EXPECT_GT(solid.frontArea, 0.1) << font << letters;
            EXPECT_NEAR(solid.volume, solid.frontArea * 0.5, solid.frontArea * 0.02) << font << letters;
        }
    }
    const double full = measure(solidLetters(text("●"), {.depth = 1})).frontArea,
                 ring = measure(solidLetters(text("○"), {.depth = 1})).frontArea;
    EXPECT_LT(ring, full / 2) << "a hole stays open";
}

TEST(SolidLetters, HaveTheSizeOfTheirFontAroundTheOrigin) {
    const SolidLetters letters = solidLetters(text("HH\nHHHH"), {.depth = 0.5f});
    const Box box = boxOf(letters.letters.corners);
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
        paint(flat.letters.corners, shown, texelOf(flat.atlas[0]));
        paint(flat.colored.corners, shown, texelOf(flat.atlas[0]));
        EXPECT_GT(likeness(shown, expected), 0.85) << written;
        EXPECT_TRUE(flat.leftOut.empty());

        const SolidLetters solid = solidLetters(letters, {.depth = 20});
        shown = Bitmap(width, height);
        paint(solid.letters.corners, shown, [](double, double) {
            return std::array<uint8_t, 4>{255, 255, 255, 255};
        });
        paint(solid.colored.corners, shown, texelOf(solid.atlas));
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
        for (size_t i = 0; i < flat.letters.corners.size(); i += 6) {
            Bitmap one(width, height);
            paint({flat.letters.corners.begin() + ptrdiff_t(i),
                   flat.letters.corners.begin() + ptrdiff_t(i) + 6},
                  one, texelOf(flat.atlas[0]));
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

std::vector<LetterPart> partsOf(const std::string& written, LetterUnit unit, float lineLength = 0) {
    LetterText letters = text(written, lineLength);
    letters.part = unit;
    const FlatLetters flat = flatLetters(letters);
    EXPECT_EQ(solidLetters(letters, {.depth = 1}).parts.size(), flat.parts.size()) << written;
    for (const LetterLayer* layer : {&flat.letters, &flat.colored}) {
        size_t next = 0;
        for (const LetterLayer::Piece& piece : layer->pieces) {
            EXPECT_EQ(piece.first, std::exchange(next, piece.first + piece.count)) << written;
            EXPECT_LT(piece.part, flat.parts.size()) << written;
        }
        EXPECT_EQ(next, layer->corners.size()) << "every corner moves with a part: " << written;
    }
    return flat.parts;
}

TEST(Letters, MoveAsTheirScriptCountsThem) {
    const std::pair<const char*, size_t> counted[] = {
        {"Kin \t etic", 7},
        {"e\u0301a\u0308", 2},
        {"有志者", 3},
        {"ありがと", 4},
        {"مرحبا", 2},  // joined up to the r, which joins nothing after it
        {"محمد", 1},
        {"مُحَمَّد", 1},  // with its vowels
        {"שלום", 4},
        {"नमस्ते", 3},    // na ma ste
        {"क्षत्रिय", 3},  // kṣa tri ya
        {"ক্ষমা", 2},
        {"தமிழ்", 3},
        {"สวัสดี", 4},
        {"น้ำ", 1},
        {"🎉❤️👨‍👩‍👧🇯🇵👍🏽", 5},
    };
    for (const auto& [written, count] : counted)
        EXPECT_EQ(partsOf(written, LetterUnit::Letter).size(), count) << written;
    EXPECT_EQ(partsOf("well, then; 你好 go", LetterUnit::Word).size(), 5u);
    EXPECT_EQ(partsOf("सत्य एव जयते", LetterUnit::Word).size(), 3u);
    EXPECT_EQ(partsOf("สวัสดีชาวโลก", LetterUnit::Word).size(), 3u) << "without blanks between them";
    EXPECT_EQ(partsOf("one\n\ntwo three\n", LetterUnit::Line).size(), 2u);
    EXPECT_EQ(partsOf("some words", LetterUnit::Line, 7).size(), 2u);
}

TEST(Letters, AreCountedAsTheyAreRead) {
    const auto parts = partsOf("ab שלום cd", LetterUnit::Letter);
    ASSERT_EQ(parts.size(), 8u);
    EXPECT_LT(parts[0].right, parts[5].left) << "a, then the last of the Hebrew letters";
    for (size_t i = 3; i < 6; ++i)
        EXPECT_LT(parts[i].right, parts[i - 1].left + 0.1f) << i << ": to the left";
    EXPECT_LT(parts[2].right, parts[6].left);
    EXPECT_EQ(parts[7].word, 2u);
    const auto lines = partsOf("one\ntwo three", LetterUnit::Word);
    EXPECT_EQ(lines[2].line, 1u);
    EXPECT_NEAR(lines[0].bottom, 0, 0.01) << "from line to line";
    EXPECT_NEAR(lines[2].top, 0, 0.01);
}

TEST(Letters, AreSpacedButForThoseThatAreJoined) {
    const auto widthOf = [](const char* written, float spacing) {
        LetterText letters = text(written);
        letters.letterSpacing = spacing;
        return flatLetters(letters).block.width;
    };
    constexpr float em = 2;
    for (const auto& [written, gaps] :
         {std::pair("abcd", 3.0f), {"你好", 1.0f}, {"👨‍👩‍👧👍🏽", 1.0f}})
        EXPECT_NEAR(widthOf(written, 0.5f), widthOf(written, 0) + gaps * 0.5f * em, 0.02) << written;
    for (const char* written : {"مرحبا", "नमस्ते"})
        EXPECT_FLOAT_EQ(widthOf(written, 0.5f), widthOf(written, 0)) << written;
    LetterText lines = text("H\nH");
    const FlatLetters close = flatLetters(lines);
    lines.lineSpacing = 2;
    const FlatLetters wide = flatLetters(lines);
    EXPECT_FLOAT_EQ(wide.block.height, 2 * close.block.height);
    const Box box = boxOf(wide.letters.corners);
    EXPECT_NEAR(box.top + box.bottom, boxOf(close.letters.corners).top + boxOf(close.letters.corners).bottom,
                0.01)
        << "in the middle of their lines";
}

/// Of what has no hole in its surface, all the areas that face one way have their match.
double openArea(const SolidLetters& letters) {
    std::array<double, 3> sum{};
    for (const auto* corners : {&letters.letters.corners, &letters.colored.corners})
        for (size_t i = 0; i < corners->size(); i += 3)
            for (size_t axis = 0; const double part : normalOf(&(*corners)[i])) sum[axis++] += part;
    return std::hypot(sum[0], sum[1], sum[2]);
}

TEST(SolidLetters, HaveTheirEdgesCutOffWhereTheyAreThickEnough) {
    for (const char* font : {"DejaVu Sans", "Noto Serif Display", "Noto Sans CJK SC"})
        for (const char* letters : {"O", "R8g&", "家龍", "Å"}) {
            LetterText written = text(letters);
            written.font.name = font;
            const Measure whole = measure(solidLetters(written, {.depth = 0.5f}));
            for (const float bevel : {0.02f, 0.2f, 2.0f})  // and far too wide for any letter
                for (const int steps : {1, 4}) {
                    const SolidLetters cut = solidLetters(
                        written,
                        {.depth = 0.5f, .bevelWidth = bevel, .bevelDepth = 0.1f, .bevelSteps = steps});
                    const Measure measured = measure(cut);
                    EXPECT_LT(openArea(cut), 1e-3) << font << letters << bevel;
                    EXPECT_LT(measured.volume, whole.volume * 0.999) << font << letters << bevel;
                    EXPECT_GT(measured.volume, whole.volume * 0.6) << font << letters << bevel;
                    EXPECT_EQ(boxOf(cut.letters.corners).front, 0.25f);
                }
        }
    const Box block = boxOf(solidLetters(text("\u2588"), {.depth = 0.2f}).letters.corners);
    const double wide = double(block.right - block.left), high = double(block.top - block.bottom), cut = 0.1;
    const Measure measured = measure(solidLetters(
        text("\u2588"), {.depth = 0.4f, .bevelWidth = 0.1f, .bevelDepth = 0.1f, .bevelSteps = 1}));
    EXPECT_NEAR(measured.frontArea, wide * high, 0.01);
    EXPECT_NEAR(measured.volume,
                wide * high * 0.4 - 2 * (cut * cut * (wide + high) - cut * cut * cut * 4 / 3), 0.01);
}

TEST(Letters, TakeWhateverNumbersAndTextsTheyAreGiven) {
    std::string endless;
    for (int i = 0; i < 250'000; ++i) endless += "ǵ ";
    endless += std::string(250'000, 'W');
    LetterText letters = text(endless, 40);
    letters.part = LetterUnit::Letter;
    EXPECT_EQ(flatLetters(letters).letters.corners.size() / 6, 4096u / 2);
    const SolidLetters tooMany =
        solidLetters(letters, {.depth = 1, .bevelWidth = 0.05f, .bevelDepth = 0.05f, .bevelSteps = 8});
    const auto cornersOf = [](const LetterText& written, int steps) {
        return solidLetters(written,
                            {.depth = 1, .bevelWidth = 0.05f, .bevelDepth = 0.05f, .bevelSteps = steps})
            .letters.corners.size();
    };
    const size_t mostCorners = limitOf("maxLetterCorners");
    EXPECT_LE(tooMany.letters.corners.size(), mostCorners);
    EXPECT_GT(tooMany.letters.corners.size(), mostCorners * 8 / 10) << "as many as fit";
    const int mostSteps = limitOf<int>("maxBevelSteps");
    EXPECT_LT(cornersOf(text("a"), mostSteps - 1), cornersOf(text("a"), mostSteps));
    EXPECT_EQ(cornersOf(text("a"), mostSteps + 1), cornersOf(text("a"), mostSteps));
    EXPECT_EQ(tooMany.leftOut, std::vector<char32_t>{U'g'}) << "but no blank";
    const float numbers[] = {NAN, INFINITY, -INFINITY, -1, 1e30f, 1e-30f};
    for (const float number : numbers) {
        LetterText strange = text("a क्ष\n👍🏽 م");
        strange.part = LetterUnit::Word;
        strange.letterSpacing = strange.lineSpacing = strange.lineLength = number;
        const FlatLetters flat = flatLetters(strange, {.mode = TextDrawingMode::FillStroke,
                                                       .strokeWidth = number,
                                                       .shadow = TextShadow{number, number, number, {}}});
        const SolidLetters solid = solidLetters(
            strange, {.depth = number, .bevelWidth = number, .bevelDepth = number, .bevelSteps = int(1e9)});
        for (const LetterLayer* layer :
             {&flat.shadow, &flat.outline, &flat.letters, &flat.colored, &solid.letters})
            for (const LetterVertex& at : layer->corners)
                ASSERT_TRUE(std::isfinite(at.x + at.y + at.z + at.normalX + at.normalZ)) << number;
        strange.font.size = number;
        EXPECT_FALSE(flatLetters(strange).parts.empty());
    }
}

TEST(Letters, ThatCannotBeDrawnAreNamedOnce) {
    const LetterText letters = text("a\U0010FFFFb\U0010FFFF");
    EXPECT_EQ(flatLetters(letters).leftOut, std::vector<char32_t>{0x10FFFF});
    EXPECT_EQ(solidLetters(letters, {.depth = 1}).leftOut, std::vector<char32_t>{0x10FFFF});
    EXPECT_EQ(flatLetters(letters).block.width, flatLetters(text("ab")).block.width);
}

TEST(SolidLetters, OfEmojiAreClosedAndCutAlongTheirShape) {
    const SolidLetters emoji = solidLetters(text("❤️"), {.depth = 0.5f});
    SolidLetters whole = emoji;
    whole.letters.corners.insert(whole.letters.corners.end(), emoji.colored.corners.begin(),
                                 emoji.colored.corners.end());
    const Measure solid = measure(whole);
    const Box box = boxOf(emoji.letters.corners);
    const double square = double(box.right - box.left) * double(box.top - box.bottom);
    EXPECT_NEAR(solid.frontArea, square * 0.7, square * 0.15) << "a heart and not its box";
    EXPECT_NEAR(solid.volume, solid.frontArea * 0.5, solid.frontArea * 0.02);
}

TEST(FlatLetters, BreakTheirLinesAndAreKerned) {
    const auto heightOf = [](const LetterText& written) { return flatLetters(written).block.height; };
    const float line = heightOf(text("H"));
    EXPECT_FLOAT_EQ(heightOf(text("some words")), line);
    EXPECT_FLOAT_EQ(heightOf(text("some words", 7)), 2 * line);
    EXPECT_FLOAT_EQ(heightOf(text("somewords", 7)), 2 * line) << "a word too long is broken";
    EXPECT_FLOAT_EQ(heightOf(text("有志者事竟成", 7)), 2 * heightOf(text("有")))
        << "ideographs break anywhere";
    EXPECT_LE(flatLetters(text("some words", 7)).block.width, 7);
    EXPECT_LT(flatLetters(text("AV")).block.width, flatLetters(text("AA")).block.width * 0.99f) << "kerned";
}

TEST(FlatLetters, KeepTheirPicturesApart) {
    const FlatLetters letters = flatLetters(text("abcabc"));
    ASSERT_EQ(letters.letters.corners.size(), 6u * 6);
    EXPECT_EQ(letters.letters.corners[0].u, letters.letters.corners[18].u) << "a letter is drawn once";
    for (const LetterVertex& corner : letters.letters.corners) {
        const int x = std::min(int(corner.u * float(letters.atlas[0].width)), letters.atlas[0].width - 1);
        const int y = std::min(int(corner.v * float(letters.atlas[0].height)), letters.atlas[0].height - 1);
        EXPECT_EQ(letters.atlas[0].pixel(x, y)[3], 0) << "clear at the corners";
    }
    EXPECT_TRUE(std::ranges::any_of(letters.atlas[0].rgba, [](uint8_t value) { return value == 255; }));
}

TEST(FlatLetters, TakeAnyText) {
    EXPECT_TRUE(flatLetters(text("")).letters.corners.empty());
    EXPECT_TRUE(flatLetters(text("\n \t\n")).letters.corners.empty());
    EXPECT_EQ(flatLetters(text("a\xff"
                               "b\U0010FFFF"))
                      .letters.corners.size() /
                  6,
              3u)
        << "a replacement in the middle";
    std::string many;
    for (int letter = 0; letter < 4096; ++letter) {
        const int point = 0x4E00 + letter;
        many += {char(0xE0 | point >> 12), char(0x80 | (point >> 6 & 63)), char(0x80 | (point & 63))};
    }
    const FlatLetters manyLetters = flatLetters(text(many, 100));
    EXPECT_LE(manyLetters.atlas[0].height, 4096);
    EXPECT_TRUE(manyLetters.leftOut.empty()) << "smaller pictures make room for all";
    EXPECT_EQ(manyLetters.letters.corners.size(), 6u * 4096);
    LetterText strange = text("a");
    strange.font.name = "No Such Font";
    EXPECT_EQ(flatLetters(strange).letters.corners.size(), 6u);
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
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "font";
    std::ofstream(file) << "soon a font";
    const std::string good = contentOf(test::installedFontFile("DejaVu Sans Mono"));
    const auto widthWith = [&](const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
        LetterText written = text("WWWW");
        written.font = {"", fontIn(file), 2};
        return solidLetters(written, {.depth = 0.5f}).block.width;
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
    const test::TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "font";
    std::string font = contentOf(test::installedFontFile("DejaVu Sans Mono"));
    setUnitsPerEm(font, 16);  // instead of 2048
    rename(font);
    std::ofstream(file, std::ios::binary) << font;
    LetterText giant = text("WWmW@");
    giant.font = {"", fontIn(file), 2};
    EXPECT_EQ(flatLetters(giant).leftOut, std::vector<char32_t>{'@'}) << "the largest of them";
    const SolidLetters solid = solidLetters(giant, {.depth = 0.5f});
    EXPECT_GT(solid.block.width, 5 * 2 * 0.6f * 100);
    EXPECT_LT(solid.letters.corners.size(), 20'000u);
}

}  // namespace
}  // namespace platform
