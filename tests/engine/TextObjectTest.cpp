// Texts whose letters stand in the scene.
#include "DrawableFixture.h"

namespace multiscene::testing {

class TextObjectTest : public DrawableFixture {
  protected:
    /// A full block, taller than wide, as a text of one letter.
    static Dictionary text(const std::string& type, const std::string& letters = "\u2588") {
        return {{"type", Value(type)},
                {"TextureFontInfo", dictionary({{"textString", Value(letters)},
                                                {"fontName", "DejaVu Sans"},
                                                {"fontSize", 30},
                                                {"textColor", "1,0,0"}})}};
    }
    static Value turned(const char* radians) {
        return array({dictionary({{"sartFps", 0}, {"endFps", 1}, {"startRotate", radians}})});
    }
};

TEST_F(TextObjectTest, FlatLettersStandAroundTheOriginInTheirColour) {
    const int before = liveGLObjects(GLObjectKind::Texture);
    Dictionary info = text("QVGLFont2DTextureFontObject3D", "word");
    info["AnimationInfo"] = keys("startRenderAlpha", 1, "endRenderAlpha", 0);
    info["FpsInfo"] = frames(0, 5);
    setUserMediaMap(Value(Dictionary{{"word", "\u2588"}}));
    show(info, 0, kBlue);
    EXPECT_TRUE(isNear(at(32, 32), kRed)) << "the user's text";
    EXPECT_TRUE(isNear(at(24, 20), kRed));
    EXPECT_TRUE(isNear(at(12, 32), kBlue));
    EXPECT_TRUE(isNear(at(52, 32), kBlue));
    EXPECT_TRUE(isNear(at(32, 4), kBlue));
    draw(5, kBlue);
    EXPECT_TRUE(isNear(at(32, 32), {128, 0, 128, 255}, 2));
    scene->renderComplete();
    EXPECT_EQ(liveGLObjects(GLObjectKind::Texture), before) << "given up with the last frame";
}

TEST_F(TextObjectTest, LettersComeOneAfterTheOther) {
    // Four blocks of 12 units beside each other, that drop in from above the picture.
    const auto shownAt = [&](const Dictionary& motion, int64_t number, const char* letters) {
        Dictionary info = text("QVGLFont2DTextureFontObject3D", letters);
        info["TextureFontInfo"] = dictionary({{"textString", Value(letters)},
                                              {"fontName", "DejaVu Sans Mono"},
                                              {"fontSize", 20},
                                              {"textColor", "1,0,0"}});
        Dictionary item{{"sartFps", 10}, {"endFps", 26}, {"letterFps", 4}, {"startTranslate", "0,100,0"}};
        for (const auto& [key, value] : motion) item[key] = value;
        info["LetterAnimation"] = array({Value(item)});
        show(info, number, kBlack);
        std::string shown;
        for (const int x : {14, 26, 38, 50}) shown += isNear(at(x, 32), kRed, 8) ? '#' : '.';
        return shown;
    };
    const char* four = "\u2588\u2588\u2588\u2588";
    for (const auto& [number, shown] :
         {std::pair(9, "...."), {10, "...."}, {14, "#..."}, {18, "##.."}, {22, "###."}, {26, "####"}})
        EXPECT_EQ(shownAt({}, number, four), shown) << number;
    EXPECT_EQ(shownAt({{"delayFps", 1}}, 15, four), "##..") << "no more than the delay, so it is done early";
    EXPECT_EQ(shownAt({{"delayFps", 1}}, 17, four), "####");
    EXPECT_EQ(shownAt({{"letterOrder", "backward"}}, 18, four), "..##");
    EXPECT_EQ(shownAt({{"letterOrder", "middle"}}, 18, four), ".##.");
    EXPECT_EQ(shownAt({{"letterOrder", "ends"}}, 18, four), "#..#");
    const std::string shuffled = shownAt({{"letterOrder", "shuffled"}, {"shuffleSeed", 3}}, 18, four);
    EXPECT_EQ(std::ranges::count(shuffled, '#'), 2);
    EXPECT_EQ(shownAt({{"letterOrder", "shuffled"}, {"shuffleSeed", 3}}, 18, four), shuffled);
    const char* words = "\u2588 \u2588\u2588";
    EXPECT_EQ(shownAt({{"letterUnit", "word"}}, 14, words), "#...");
    EXPECT_EQ(shownAt({{"letterUnit", "word"}}, 26, words), "#.##");
    const char* hebrew = "\u05D7\u05D7\u05D7\u05D7";  // read from the right
    const std::string first = shownAt({{"startRenderAlpha", 0}}, 14, hebrew);
    EXPECT_EQ(first.substr(0, 2), "..");
}

TEST_F(TextObjectTest, LettersTurnGrowAndFadeAroundTheirPivot) {
    Dictionary info = text("QVGLFont2DTextureFontObject3D");  // 23 wide, 30 high
    const auto drawWith = [&](Dictionary item) {
        item.insert({{"sartFps", 0}, {"endFps", 8}, {"letterFps", 8}});
        info["LetterAnimation"] = array({Value(item)});
        show(info, 4, kBlack);
    };
    drawWith({{"startRenderAlpha", 0}});
    EXPECT_NEAR(at(32, 32)[0], 128, 3) << "half of the way";
    drawWith({{"startScale", "0,0,1"}, {"pivot", "0,0.5"}});
    EXPECT_TRUE(isNear(at(24, 32), kRed)) << "the left edge stays";
    EXPECT_TRUE(isNear(at(38, 32), kBlack));
    drawWith({{"startRotate", "0,0,180"}});
    EXPECT_TRUE(isNear(at(44, 32), kRed)) << "lies on its side";
    EXPECT_TRUE(isNear(at(32, 18), kBlack));
    info = text("QVGLFont3DExtrudeFontObject3D");
    info["textDepth"] = 16;
    info["sideColor"] = "0,1,0";
    drawWith({{"startRotate", "0,180,0"}, {"startRenderAlpha", 0}});
    EXPECT_TRUE(isNear(at(32, 32), {0, 128, 0, 255}, 4)) << "its side, half faded";
    EXPECT_TRUE(isNear(at(42, 32), kBlack));
}

TEST_F(TextObjectTest, LettersLieInTheirBoxAndShrinkToIt) {
    const auto boxOf = [&](const Dictionary& more) {
        Dictionary info = text("QVGLFont2DTextureFontObject3D"),
                   letters = info["TextureFontInfo"].dictionary();
        letters["fontSize"] = 10;
        for (const auto& [key, value] : more) letters[key] = value;
        info["TextureFontInfo"] = Value(letters);
        show(info, 0, kBlack);
        std::array<int, 4> box{side, side, -1, -1};
        for (int y = 0; y < side; ++y)
            for (int x = 0; x < side; ++x)
                if (at(x, y)[0] > 128)
                    box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x),
                           std::max(box[3], y)};
        return box;
    };
    const auto middle = boxOf({});
    EXPECT_NEAR(middle[0] + middle[2], 63, 1);
    EXPECT_NEAR(middle[1] + middle[3], 63, 3);
    const Dictionary room{{"lineLength", 60}, {"boxHeight", 60}};
    Dictionary corner = room;
    corner["textHorizontalDrawAlignmentMode"] = 0;
    corner["textVerticalDrawAlignmentMode"] = 2;
    const auto lower = boxOf(corner);
    EXPECT_NEAR(lower[0], 2, 1);
    EXPECT_NEAR(lower[3], 61, 1);
    EXPECT_NEAR(boxOf({{"textHorizontalDrawAlignmentMode", 2}})[2], 31, 1)
        << "without a box it ends at the origin";

    Dictionary large = room;
    large["textString"] = "\u2588\u2588\u2588\u2588";
    large["fontSize"] = 40;
    EXPECT_GT(boxOf(large)[3] - boxOf(large)[1], 60) << "too large";
    large["smallestFontSize"] = 5;
    const auto shrunk = boxOf(large);
    EXPECT_GE(shrunk[0], 2);
    EXPECT_LE(shrunk[2], 61);
    EXPECT_GT(shrunk[2] - shrunk[0], 54) << "as large as there is room";
    large["smallestFontSize"] = 30;
    EXPECT_GT(boxOf(large)[3] - boxOf(large)[1], 55) << "no smaller than that";
}

TEST_F(TextObjectTest, FlatLettersHaveOutlineAndShadow) {
    Dictionary info = text("QVGLFont2DTextureFontObject3D"), letters = info["TextureFontInfo"].dictionary();
    letters.insert({{"textDrawingMode", 2},
                    {"strokeColor", "0,1,0"},
                    {"strokeWidth", 8},
                    {"isShowTextShadow", true},
                    {"shadowColor", "0,0,1"},
                    {"shadowOffset", "10,0"}});
    info["TextureFontInfo"] = Value(letters);
    info["AnimationInfo"] = keys("startRenderAlpha", 1, "endRenderAlpha", 0);
    show(info, 0, kBlack);
    // From 20.5 to 43.5 across; the line is 4 wide on each side.
    EXPECT_TRUE(isNear(at(30, 32), kRed));
    EXPECT_TRUE(isNear(at(18, 32), kGreen)) << "half of the line outside";
    EXPECT_TRUE(isNear(at(45, 32), kGreen));
    EXPECT_TRUE(isNear(at(54, 32), kBlue)) << "the shadow of letter and line";
    EXPECT_TRUE(isNear(at(60, 32), kBlack));
    draw(5, kBlack);
    EXPECT_TRUE(isNear(at(54, 32), {0, 0, 128, 255}, 3));
    letters["textDrawingMode"] = 1;
    info["TextureFontInfo"] = Value(letters);
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(45, 32), kGreen));
    EXPECT_TRUE(isNear(at(37, 32), kBlack)) << "the inside is clear";
}

TEST_F(TextObjectTest, EmojiKeepTheirColoursAndFadeWithTheText) {
    const auto isYellow = [](const Pixel& pixel) {
        return pixel[0] > 200 && pixel[1] > 150 && pixel[2] < 120;
    };
    for (const char* type : {"QVGLFont2DTextureFontObject3D", "QVGLFont3DExtrudeFontObject3D"}) {
        Dictionary info = text(type, "\U0001F7E8");  // a yellow square
        info["textDepth"] = 16;
        info["sideColor"] = "0,1,0";
        info["AnimationInfo"] = keys("startRenderAlpha", 1, "endRenderAlpha", 0);
        info["FpsInfo"] = frames(0, 10);
        show(info, 0, kBlue);
        EXPECT_TRUE(isYellow(at(32, 32))) << type;
        EXPECT_TRUE(isNear(at(32, 2), kBlue)) << type;
        const Pixel full = at(32, 32);
        draw(5, kBlue);
        EXPECT_NEAR(at(32, 32)[0], full[0] / 2, 3) << type;
        EXPECT_NEAR(at(32, 32)[2], (full[2] + 255) / 2, 3) << type;
    }
    Dictionary info = text("QVGLFont3DExtrudeFontObject3D", "\U0001F7E8");
    info["textDepth"] = 16;
    info["sideColor"] = "0,1,0";
    info["TransformArray"] = turned("0,1.5708,0");
    show(info, 0, kBlue);
    EXPECT_TRUE(isNear(at(32, 32), kGreen)) << "from the side";
    info["TransformArray"] = turned("0,3.1416,0");
    show(info, 0, kBlue);
    EXPECT_TRUE(isYellow(at(32, 32))) << "from behind";
}

TEST_F(TextObjectTest, SolidLettersShowTheirSidesAndTakeLight) {
    Dictionary info = text("QVGLFont3DExtrudeFontObject3D");
    info["textDepth"] = 16;
    info["sideColor"] = "0,1,0";
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kRed));
    EXPECT_TRUE(isNear(at(42, 32), kRed));
    info["TransformArray"] = turned("0,1.5708,0");
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kGreen)) << "from the side";
    EXPECT_TRUE(isNear(at(38, 32), kGreen));
    EXPECT_TRUE(isNear(at(42, 32), kBlack)) << "no further than its depth";
    info["TransformArray"] = turned("0,3.1416,0");
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kRed)) << "from behind";

    Dictionary cut = info, letters = info["TextureFontInfo"].dictionary();
    letters.insert({{"bevelWidth", 4}, {"bevelColor", "0,0,1"}});
    cut["TextureFontInfo"] = Value(letters);
    cut.erase("TransformArray");
    show(cut, 0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kRed));
    EXPECT_TRUE(isNear(at(41, 32), kBlue)) << "the cut edge, from the front";
    EXPECT_TRUE(isNear(at(37, 32), kRed)) << "no wider than it is to be";

    newScene();
    const auto shows = [&](const char* name, const std::vector<Pixel>& pixels, int columns) {
        return dictionary({{"textureType", "image"}, {"texture", Value(picture(name, pixels, columns))}});
    };
    cut["FrontTextureInfo"] = shows("front.png", {kGreen, kGreen, kWhite, kWhite}, 2);
    cut["SideTextureInfo"] = shows("side.png", {kBlue, kRed}, 1);
    show(cut, 0, kBlack);
    EXPECT_TRUE(isNear(at(32, 22), kGreen)) << "the upper half of the picture";
    EXPECT_TRUE(isNear(at(32, 43), kWhite));
    EXPECT_TRUE(isNear(at(41, 32), kBlue)) << "the cut edge keeps its colour";
    cut["TransformArray"] = turned("0,1.5708,0");
    letters.erase("bevelWidth");
    cut["TextureFontInfo"] = Value(letters);
    show(cut, 0, kBlack);
    EXPECT_TRUE(isNear(at(38, 32), kBlue)) << "the front's side of it";
    EXPECT_TRUE(isNear(at(26, 32), kRed));

    info.erase("sideColor");
    info["TransformArray"] = turned("0,0.7854,0");
    info["FpsInfo"] = dictionary({{"isLightEnable", true}});
    info["LightSourceArray"] = array({dictionary({{"lightSourceType", 2},
                                                  {"lightSourcePosition", "1,0,1"},
                                                  {"diffuseMaterialColor", "0.8,0.8,0.8"}})});
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(35, 32), {204, 0, 0, 255}, 2)) << "the front is turned to the light";
    EXPECT_TRUE(isNear(at(20, 32), kBlack, 2)) << "the side is turned away";
}

}  // namespace multiscene::testing
