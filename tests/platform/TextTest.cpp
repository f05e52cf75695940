#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <numeric>

#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"
#include "platform/text/Blur.h"
#include "platform/text/TextRasterizer.h"
#include "tests/platform/InstalledFont.h"
#include "tests/platform/TemporaryFolder.h"

namespace platform {
namespace {

constexpr int width = 400, height = 200;

TextTextureDescription describe(const std::string& text, float size = 40) {
    TextTextureDescription description;
    description.layout.text = text;
    description.layout.font = {"DejaVu Sans", nullptr, size};
    description.textColor = {1, 0, 0, 1};
    description.textureSize = {width, height};
    description.drawRect = {0, 0, width, height};
    return description;
}

Bitmap draw(const TextTextureDescription& description) { return drawText(description, width, height, 1); }

/// The smallest rectangle around all that is not transparent; right and bottom are beyond it.
struct Bounds {
    int left = width, top = height, right = 0, bottom = 0;

    explicit Bounds(const Bitmap& bitmap, int threshold = 32) {
        for (int y = 0; y < bitmap.height; ++y)
            for (int x = 0; x < bitmap.width; ++x)
                if (bitmap.pixel(x, y)[3] > threshold) add(x, y);
    }
    void add(int x, int y) {
        left = std::min(left, x);
        right = std::max(right, x + 1);
        top = std::min(top, y);
        bottom = std::max(bottom, y + 1);
    }
    bool isEmpty() const { return right <= left; }
};

template <typename Condition>
int count(const Bitmap& bitmap, Condition condition) {
    int number = 0;
    for (size_t i = 0; i < bitmap.rgba.size(); i += 4) number += condition(&bitmap.rgba[i]);
    return number;
}

bool isRed(const uint8_t* p) { return p[0] > 200 && p[1] < 40 && p[2] < 40 && p[3] > 200; }
bool isBlue(const uint8_t* p) { return p[2] > 200 && p[1] < 40 && p[0] < 40 && p[3] > 200; }
/// Anything but a shade of the letters' red.
bool hasOtherColor(const uint8_t* p) { return p[1] > 60 || p[2] > 60; }

TEST(TextTest, LinesBreakBetweenWordsAndInsideThoseThatAreTooLong) {
    TextLayoutDescription layout = describe("one two three four").layout;
    EXPECT_EQ(measureText(layout, 0).lineCount, 1);
    const TextMeasure oneWord = measureText(describe("three").layout, 0);
    const TextMeasure wrapped = measureText(layout, oneWord.size.width + 1);
    EXPECT_EQ(wrapped.lineCount, 4);
    EXPECT_LE(wrapped.size.width, oneWord.size.width + 1);
    EXPECT_NEAR(wrapped.size.height, 4 * oneWord.size.height, 0.5);

    layout.text = "Donaudampfschifffahrt";
    layout.wrap = TextWrap::Words;
    EXPECT_EQ(measureText(layout, 100).lineCount, 1);
    EXPECT_GT(measureText(layout, 100).size.width, 100);
    layout.wrap = TextWrap::WordsThenCharacters;
    EXPECT_GT(measureText(layout, 100).lineCount, 3);
    EXPECT_LE(measureText(layout, 100).size.width, 100);
    layout.text = "你好世界你好世界";
    EXPECT_EQ(measureText(layout, 90).lineCount, 4) << "Chinese breaks between any two characters";
    layout.text = "a\nb\r\nc";
    EXPECT_EQ(measureText(layout, 0).lineCount, 3);
    layout.maxLines = 2;
    EXPECT_EQ(measureText(layout, 0).lineCount, 2);
}

/// How wide the ink of each line is, from top to bottom: lines are parted by clear rows.
std::vector<int> lineWidths(const Bitmap& bitmap) {
    std::vector<int> widths;
    bool wasClear = true;
    int left = 0, right = 0;
    for (int y = 0; y < bitmap.height; ++y) {
        int first = bitmap.width, last = -1;
        for (int x = 0; x < bitmap.width; ++x)
            if (bitmap.pixel(x, y)[3] > 32) first = std::min(first, x), last = x;
        if (last >= 0 && wasClear) widths.push_back(0), left = first, right = last;
        wasClear = last < 0;
        if (wasClear) continue;
        left = std::min(left, first), right = std::max(right, last);
        widths.back() = right - left + 1;
    }
    return widths;
}

TEST(TextTest, LinesThatBreakAreAboutEquallyLong) {
    TextTextureDescription description = describe("");
    const auto widthsAt = [&](const std::string& text, double boxWidth) {
        description.layout.text = text;
        description.drawRect.width = boxWidth;
        return lineWidths(draw(description));
    };
    const auto linesOf = [&](std::vector<int> counts, const std::vector<int>& widths) {
        ASSERT_EQ(widths.size(), counts.size());
        for (size_t i = 0; i < widths.size(); ++i) EXPECT_NEAR(widths[i], 40 * counts[i], 8) << i;
    };
    linesOf({4, 3, 3}, widthsAt("国国国国国国国国国国", 170));  // filled: 4, 4, 2
    linesOf({3, 3, 3}, widthsAt("国国国国国国国国国", 170));    // filled: 4, 4, 1
    linesOf({4, 3}, widthsAt("国国国国国国国", 250));           // filled: 6, 1
    linesOf({6}, widthsAt("国国国国国国", 250));
    linesOf({2, 5, 4}, widthsAt("国国\n国国国国国国国国国", 250));  // each paragraph by itself

    const std::vector<int> words = widthsAt("the longer lines of a text", 390);
    ASSERT_EQ(words.size(), 2u);
    EXPECT_NEAR(words[0], words[1], 80);
    const std::vector<int> brokenWord = widthsAt("HHHHHHHHHHHHHH", 370);  // filled: 12, 2
    ASSERT_EQ(brokenWord.size(), 2u);
    EXPECT_EQ(brokenWord[0], brokenWord[1]);
    description.layout.alignment = TextAlignment::Justified;
    EXPECT_GT(widthsAt("the longer lines of a text", 390)[0], 360);
    description.layout.alignment = TextAlignment::Left;
    description.layout.wrap = TextWrap::None;
    EXPECT_EQ(widthsAt("the lines", 100).size(), 1u);
}

TEST(TextTest, LettersThatNoFontHasAreNamedAndLeftOut) {
    const std::string missing = "a\U0010FFFFa\U0010FFFF\U0010FFFE";
    const TextMeasure measure = measureText(describe(missing).layout, 0);
    EXPECT_EQ(measure.missingLetters, (std::vector<char32_t>{0x10FFFF, 0x10FFFE}));
    EXPECT_EQ(draw(describe(missing)).rgba, draw(describe("aa")).rgba);
    EXPECT_TRUE(measureText(describe("a 国🎉نमस्ते\u200d\ufe0f\n").layout, 0).missingLetters.empty());
}

TEST(TextTest, AlignmentAndPlacementSayWhereTheLinesLie) {
    TextTextureDescription description = describe("Hi");
    const Bounds left(draw(description));
    EXPECT_LT(left.left, 10);
    EXPECT_LT(left.bottom, 60);
    description.layout.alignment = TextAlignment::Center;
    const Bounds center(draw(description));
    EXPECT_NEAR((center.left + center.right) / 2, width / 2, 3);
    description.layout.alignment = TextAlignment::Right;
    EXPECT_GT(Bounds(draw(description)).right, width - 10);
    description.verticalPlacement = TextPlacement::End;
    EXPECT_GT(Bounds(draw(description)).top, height - 60);
    // A block on the right whose lines begin at the same place.
    description = describe("I\nIIIIIIII");
    description.horizontalPlacement = TextPlacement::End;
    const Bitmap block = draw(description);
    const Bounds bounds(block);
    EXPECT_GT(bounds.right, width - 10);
    EXPECT_GT(block.pixel(bounds.left + 1, bounds.top + 10)[3], 200) << "the short line's letter";
}

TEST(TextTest, RightToLeftFollowsTheScriptOnlyWhenAsked) {
    TextTextureDescription description = describe("שלום");
    EXPECT_LT(Bounds(draw(description)).left, 10) << "left is left for every script";
    description.layout.alignment = TextAlignment::Natural;
    EXPECT_GT(Bounds(draw(description)).right, width - 10);
    description.layout.text = "abc";
    EXPECT_LT(Bounds(draw(description)).left, 10);
    description.layout.text = "مرحبا";
    EXPECT_GT(count(draw(description), isRed), 100);
}

TEST(TextTest, ModesFillStrokeAndHide) {
    TextTextureDescription description = describe("O", 120);
    description.drawRect = {20, 20, width - 40, height - 40};
    description.strokeColor = {0, 0, 1, 1};
    description.strokeWidth = 12;
    const Bounds filled(draw(description));
    const int filledArea = count(draw(description), isRed);
    EXPECT_EQ(count(draw(description), isBlue), 0);

    description.drawingMode = TextDrawingMode::FillStroke;
    const Bitmap both = draw(description);
    const Bounds around(both);
    EXPECT_NEAR(filled.left - around.left, 6, 1.5);
    EXPECT_NEAR(around.right - filled.right, 6, 1.5);
    EXPECT_NEAR(around.bottom - filled.bottom, 6, 1.5);
    EXPECT_NEAR(count(both, isRed), filledArea, filledArea * 0.05) << "the letter lies over its outline";
    EXPECT_GT(count(both, isBlue), 500);

    description.drawingMode = TextDrawingMode::Stroke;
    description.strokeWidth = 2;
    EXPECT_EQ(count(draw(description), isRed), 0);
    EXPECT_GT(count(draw(description), isBlue), 200);
    description.drawingMode = TextDrawingMode::Invisible;
    EXPECT_TRUE(Bounds(draw(description), 0).isEmpty());
}

TEST(TextTest, ShadowsLieBesideTheTextAndFadeWithTheirRadius) {
    TextTextureDescription description = describe("I", 100);
    description.drawRect = {150, 20, 200, 150};
    const Bounds text(draw(description));
    description.shadow = TextShadow{40, 10, 0, {0, 0, 1, 1}};
    const Bitmap sharp = draw(description);
    EXPECT_EQ(Bounds(sharp).right, text.right + 40);
    EXPECT_EQ(Bounds(sharp).bottom, text.bottom + 10);
    EXPECT_GT(count(sharp, isBlue), 300);
    EXPECT_GT(count(sharp, isRed), 300);
    description.shadow->blurRadius = 12;
    const Bitmap soft = draw(description);
    EXPECT_GT(Bounds(soft, 8).right, text.right + 40 + 5);
    EXPECT_LT(Bounds(soft, 8).right, text.right + 40 + 24);
    EXPECT_LT(count(soft, isBlue), count(sharp, isBlue) / 2);
    description.background = Color{0, 1, 0, 1};
    EXPECT_GT(count(draw(description), [](const uint8_t* p) { return p[1] > 200 && p[0] < 40; }), 1000);
}

TEST(TextTest, EmojiKeepTheirColoursAndHaveNoOutline) {
    TextTextureDescription description = describe("🌈🎉", 80);
    const Bitmap colourful = draw(description);
    EXPECT_GT(count(colourful, hasOtherColor), 1000);
    description.textColor.alpha = 0.5f;
    EXPECT_EQ(count(draw(description), [](const uint8_t* p) { return p[3] > 130; }), 0);
    description.drawingMode = TextDrawingMode::Stroke;
    description.strokeWidth = 4;
    EXPECT_TRUE(Bounds(draw(description), 0).isEmpty());
}

TEST(TextTest, ColumnsRunDownAndFromRightToLeft) {
    TextTextureDescription description = describe("新年\n快", 60);
    description.layout.direction = TextDirection::Vertical;
    description.verticalPlacement = TextPlacement::Fill;
    description.horizontalPlacement = TextPlacement::End;
    const Bitmap columns = draw(description);
    const Bounds bounds(columns);
    EXPECT_GT(bounds.right, width - 30);
    EXPECT_GT(bounds.bottom, 100) << "two characters below each other";
    EXPECT_LT(bounds.bottom, 130);
    EXPECT_GT(bounds.right - bounds.left, 100) << "two columns";
    const TextSize size = measureText(description.layout, 0).size;
    EXPECT_NEAR(size.height, 120, 2);
    EXPECT_GT(size.width, 100);
}

TEST(TextTest, OneTextGivesOnePictureAtEveryScale) {
    TextTextureDescription description = describe("Scale me\nplease");
    EXPECT_EQ(draw(description).rgba, draw(description).rgba);
    const Bounds whole(draw(description));
    const Bounds half(drawText(description, width / 2, height / 2, 0.5));
    EXPECT_NEAR(half.right, whole.right / 2.0, 1.5);
    EXPECT_NEAR(half.bottom, whole.bottom / 2.0, 1.5);
    description.drawScale = 2;
    description.drawRect = {0, 0, width / 2, height / 2};
    EXPECT_NEAR(Bounds(draw(description)).right, whole.right * 2.0, 3);
    EXPECT_TRUE(drawText(description, 0, 10, 1).isEmpty());
}

TEST(TextTest, CharactersAreCountedAsReadersDo) {
    EXPECT_EQ(truncateText("abcdef", 3), "abc");
    EXPECT_EQ(truncateText("abc", 0), "abc");
    EXPECT_EQ(truncateText("👩‍👩‍👧x你好", 2), "👩‍👩‍👧x");
    EXPECT_EQ(truncateText("e\u0301e", 1), "e\u0301");
    EXPECT_EQ(truncateText("a\xff\xfe\x80z", 0), "a\ufffd\ufffd\ufffdz");
    EXPECT_FALSE(Bounds(draw(describe("\xc3"))).isEmpty()) << "cut in the middle of a character";
    EXPECT_TRUE(Bounds(draw(describe("")), 0).isEmpty());
}

TEST(TextTest, FontsComeByNameOrFromAFileInsideTheFence) {
    EXPECT_TRUE(isFontInstalled("DejaVu Sans"));
    EXPECT_TRUE(isFontInstalled("DejaVu Sans Bold"));
    EXPECT_TRUE(isFontInstalled("DejaVuSans-Bold"));
    EXPECT_FALSE(isFontInstalled("No Such Letters"));

    const test::TemporaryFolder temporary;
    const std::filesystem::path folder = temporary.path();
    std::filesystem::copy_file(test::installedFontFile("DejaVu Sans", FC_WEIGHT_BOLD), folder / "mine.ttf");
    writeFileAtomically(folder / "bad.ttf", "not a font");
    const auto widthWith = [](const TextFont& font) {
        return measureText({.text = "Width 你 🎉", .font = font}, 0).size.width;
    };
    const double standard = widthWith({"", nullptr, 40}), bold = widthWith({"DejaVu Sans Bold", nullptr, 40});
    ASSERT_GT(std::abs(standard - bold), 2);
    FileGate gate;
    gate.allowFolder(folder);
    const auto fontIn = [&](const char* name) { return openFontFile(gate.open(folder / name).file); };
    const FontFile* const mine = fontIn("mine.ttf");
    EXPECT_EQ(widthWith({"", mine, 40}), bold);
    EXPECT_EQ(fontIn("mine.ttf"), mine) << "loaded once";
    EXPECT_EQ(fontIn("bad.ttf"), nullptr);
    EXPECT_EQ(widthWith({"No Such Letters", nullptr, 40}), standard);
}

/// In a process of its own, which has opened none before: those that are open stay open.
TEST(TextTest, AsManyFontFilesAreTakenAsTheTableSays) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const test::TemporaryFolder temporary;
    const std::filesystem::path folder = temporary.path();
    const std::string font = test::installedFontFile("DejaVu Sans", FC_WEIGHT_BOLD);
    const auto taken = [&] {
        FileGate gate;
        gate.allowFolder(folder);
        const int most = limitOf<int>("maxFontFiles");
        int count = 0;
        for (int number = 0; number <= most; ++number) {
            const auto file = folder / (std::to_string(number) + ".ttf");
            std::filesystem::copy_file(font, file);
            if (openFontFile(gate.open(file).file)) ++count;
        }
        const bool isOldOneThere = openFontFile(gate.open(folder / "0.ttf").file);
        std::filesystem::remove_all(folder);
        ::_exit(count == most && isOldOneThere ? 0 : 1);
    };
    EXPECT_EXIT(taken(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace platform
