// Letters as atlases and meshes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "platform/font/Letters.h"
#include "platform/text/FontPath.h"

namespace platform {
namespace {

LetterText text(const std::string& letters, float lineLength = 0,
                TextAlignment alignment = TextAlignment::Left) {
    return {letters, {"DejaVu Sans", "", 2}, alignment, lineLength};
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
    EXPECT_LE(flatLetters(text(many, 100)).atlas.height, 4096);
    LetterText strange = text("a");
    strange.font.name = "No Such Font";
    EXPECT_EQ(flatLetters(strange).triangles.size(), 6u);
}

TEST(SolidLetters, TakeFontFilesOfAnyKind) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() / uniqueIdentifier();
    std::ofstream(file) << "soon a font";
    FileGate::shared().reset();
    FileGate::shared().allowFile(file);
    const std::string good = [] {
        std::ifstream stream(installedFontPath("DejaVu Sans Mono", U"W"), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(stream), {});
    }();
    const auto widthWith = [&](const std::string& bytes) {
        std::ofstream(file, std::ios::binary) << bytes;
        LetterText written = text("WWWW");
        written.font = {"", file, 2};
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
    FileGate::shared().reset();
}

}  // namespace
}  // namespace platform
