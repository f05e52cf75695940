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
    add(info);
    draw(0, kBlue);
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

TEST_F(TextObjectTest, ATextWithTooManyLettersIsDrawnSmaller) {
    const auto widthWith = [&](const Dictionary& users) {
        newScene();
        setUserMediaMap(Value(users));
        add(text("QVGLFont2DTextureFontObject3D", "word"));
        draw(0, kBlack);
        int width = 0;
        for (int x = 0; x < side; ++x) width += at(x, 32)[0] > 128;
        return width;
    };
    const int wide = widthWith({{"word", "\u2588\u2588"}});
    EXPECT_GT(wide, 40);
    EXPECT_NEAR(widthWith({{"word", "\u2588\u2588"}, {"userText_scale_word", 0.5}}), wide / 2, 1);
}

TEST_F(TextObjectTest, LettersOfOneTextHaveTheirShapes) {
    Dictionary info = text("QVGLFont2DTextureFontObject3D", "L\u2588");
    add(info);
    draw(0, kBlack);
    // The foot of the L, what is above it, and the block.
    EXPECT_GT(at(21, 41)[0], 200);
    EXPECT_EQ(at(25, 28)[0], 0);
    EXPECT_GT(at(40, 28)[0], 200);
}

TEST_F(TextObjectTest, EmojiKeepTheirColoursAndFadeWithTheText) {
    const auto isYellow = [](const Pixel& pixel) {
        return pixel[0] > 200 && pixel[1] > 150 && pixel[2] < 120;
    };
    for (const char* type : {"QVGLFont2DTextureFontObject3D", "QVGLFont3DExtrudeFontObject3D"}) {
        newScene();
        Dictionary info = text(type, "\U0001F7E8");  // a yellow square
        info["textDepth"] = 16;
        info["sideColor"] = "0,1,0";
        info["AnimationInfo"] = keys("startRenderAlpha", 1, "endRenderAlpha", 0);
        info["FpsInfo"] = frames(0, 10);
        add(info);
        draw(0, kBlue);
        EXPECT_TRUE(isYellow(at(32, 32))) << type;
        EXPECT_TRUE(isNear(at(32, 2), kBlue)) << type;
        const Pixel full = at(32, 32);
        draw(5, kBlue);
        EXPECT_NEAR(at(32, 32)[0], full[0] / 2, 3) << type;
        EXPECT_NEAR(at(32, 32)[2], (full[2] + 255) / 2, 3) << type;
    }
    newScene();
    Dictionary info = text("QVGLFont3DExtrudeFontObject3D", "\U0001F7E8");
    info["textDepth"] = 16;
    info["sideColor"] = "0,1,0";
    info["TransformArray"] = turned("0,1.5708,0");
    add(info);
    draw(0, kBlue);
    EXPECT_TRUE(isNear(at(32, 32), kGreen)) << "from the side";
    newScene();
    info["TransformArray"] = turned("0,3.1416,0");
    add(info);
    draw(0, kBlue);
    EXPECT_TRUE(isYellow(at(32, 32))) << "from behind";
}

TEST_F(TextObjectTest, SolidLettersShowTheirSidesAndTakeLight) {
    Dictionary info = text("QVGLFont3DExtrudeFontObject3D");
    info["textDepth"] = 16;
    info["sideColor"] = "0,1,0";
    add(info);
    draw(0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kRed));
    EXPECT_TRUE(isNear(at(42, 32), kRed));
    newScene();
    info["TransformArray"] = turned("0,1.5708,0");
    add(info);
    draw(0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kGreen)) << "from the side";
    EXPECT_TRUE(isNear(at(38, 32), kGreen));
    EXPECT_TRUE(isNear(at(42, 32), kBlack)) << "no further than its depth";
    newScene();
    info["TransformArray"] = turned("0,3.1416,0");
    add(info);
    draw(0, kBlack);
    EXPECT_TRUE(isNear(at(32, 32), kRed)) << "from behind";

    newScene();
    info.erase("sideColor");
    info["TransformArray"] = turned("0,0.7854,0");
    info["FpsInfo"] = dictionary({{"isLightEnable", true}});
    info["LightSourceArray"] = array({dictionary({{"lightSourceType", 2},
                                                  {"lightSourcePosition", "1,0,1"},
                                                  {"diffuseMaterialColor", "0.8,0.8,0.8"}})});
    add(info);
    draw(0, kBlack);
    EXPECT_TRUE(isNear(at(35, 32), {204, 0, 0, 255}, 2)) << "the front is turned to the light";
    EXPECT_TRUE(isNear(at(20, 32), kBlack, 2)) << "the side is turned away";
}

}  // namespace multiscene::testing
