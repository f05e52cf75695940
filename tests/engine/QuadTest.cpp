#include <epoxy/gl.h>

#include "3DObject/MeshObject3D/QVMeshObject3D.h"
#include "3DObject/QuadObject3D/QVQuadMaskObject3D.h"
#include "DrawableFixture.h"

namespace multiscene::testing {

class QuadTest : public DrawableFixture {
  protected:
    /// Two colours above each other and two below.
    std::string fourColors() { return picture("four.png", {kRed, kGreen, kBlue, kWhite}, 2); }

    std::array<float, 2> sizeWith(int32_t mode, int width, int height) {
        newScene();
        const std::string file = picture("fit.png", std::vector<Pixel>(size_t(width * height), kRed), width);
        Dictionary info = quad("QVQuadObject3D", file);
        info["QuadInfo"] = dictionary(
            {{"modelWidth", 10}, {"modelHeight", 10}, {"anchorX", 3}, {"quadObject3DContentMode", mode}});
        const auto node = add<QVQuadObject3D>(info);
        draw(0);
        const auto& corners = node->squareVertices();
        EXPECT_FLOAT_EQ(corners[0] + corners[3], 6) << "the anchor stays the centre";
        return {corners[3] - corners[0], corners[7] - corners[1]};
    }
};

TEST_F(QuadTest, ContentModesKeepTheProportionsOfThePicture) {
    const auto near = [](const std::array<float, 2>& size, float width, float height) {
        EXPECT_NEAR(size[0], width, 0.001);
        EXPECT_NEAR(size[1], height, 0.001);
    };
    near(sizeWith(0, 192, 108), 10, 10);
    near(sizeWith(1, 192, 108), 10, 5.625);
    near(sizeWith(2, 192, 108), 17.7778f, 10);
    near(sizeWith(1, 108, 192), 5.625, 10);
    near(sizeWith(2, 108, 192), 10, 17.7778f);
    near(sizeWith(7, 192, 108), 10, 10);
}

TEST_F(QuadTest, TransparentPicturesKeepTheirColourAtTheEdge) {
    // Half transparent red as files hold it, and as decoding multiplies it.
    add(quad("QVQuadObject3D", picture("half.png", {{255, 0, 0, 128}})));
    draw(0, kWhite);
    EXPECT_TRUE(isNear(at(30, 30), {255, 127, 127, 255}, 2));
}

TEST_F(QuadTest, StartedLateItNeverLoadsItsPicture) {
    Dictionary info = quad("QVQuadObject3D", fourColors());
    info["FpsInfo"] = frames(2, 9);
    const auto node = add<QVQuadObject3D>(info);
    draw(3);
    EXPECT_EQ(node->texture(), nullptr);
    EXPECT_EQ(at(8, 8), kNothing);
}

TEST_F(QuadTest, OpacityFollowsItsKeyFramesAndStartsAtOne) {
    Dictionary info = quad("QVQuadDiaphaneityObject3D", picture("red.png", {kRed}));
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(30, 30), kRed));
    info["AnimationInfo"] = keys("startRenderAlpha", 1, "endRenderAlpha", 0);
    show(info, 5, kBlack);
    EXPECT_EQ(at(30, 30), kBlack) << "no picture yet: frame 0 was left out";
    show(info, 0, kBlack);
    draw(5, kBlack);
    EXPECT_TRUE(isNear(at(30, 30), {128, 0, 0, 255}, 2));
    draw(10, kBlack);
    EXPECT_TRUE(isNear(at(30, 30), kBlack));
}

TEST_F(QuadTest, BlendFunctionOfItsOwnEndsWithTheNode) {
    struct Case {
        const char *src, *dst;   // for every node
        int srcBlend, decBlend;  // for the blend quad
        Pixel expected;
    };
    const Case cases[] = {
        {"ONE", "ONE", GL_ONE, GL_ONE, {150, 255, 100, 255}},
        {"DST_COLOR", "ZERO", GL_DST_COLOR, GL_ZERO, {20, 78, 0, 255}},
        {"ONE", "ONE_MINUS_SRC_COLOR", GL_ONE, GL_ONE_MINUS_SRC_COLOR, {130, 222, 100, 255}},
        {"ZERO", "SRC_ALPHA", GL_ZERO, GL_SRC_ALPHA, {50, 200, 0, 255}}};
    const std::string grey = picture("grey.png", {{100, 100, 100, 255}});
    for (const Case& it : cases) {
        Dictionary blended = quad("QVQuadBlendObject3D", grey);
        blended["BlendInfo"] = dictionary({{"srcBlend", it.srcBlend}, {"decBlend", it.decBlend}});
        Dictionary any = quad("QVQuadObject3D", grey);
        any["FpsInfo"] = dictionary({{"isChangeBlend", true}, {"srcBlend", it.src}, {"dstBlend", it.dst}});
        Dictionary after = quad("QVQuadObject3D", picture("half.png", {{0, 0, 255, 128}}), 20, 20);
        for (const Dictionary& info : {blended, any}) {
            newScene();
            add(info);
            add(after);
            draw(0, {50, 200, 0, 255});
            EXPECT_TRUE(isNear(at(4, 4), it.expected, 2)) << it.src << " " << it.dst;
            const Pixel mixed{uint8_t(it.expected[0] / 2), uint8_t(it.expected[1] / 2),
                              uint8_t((it.expected[2] + 255) / 2), 255};
            EXPECT_TRUE(isNear(at(32, 32), mixed, 2)) << "the next node blends as ever";
        }
    }
}

TEST_F(QuadTest, TargetsInsideTargetsShowWhatWasDrawnIntoThem) {
    const auto drawnInto = [](const char* key, Value::Array children, float depth) {
        return dictionary({{"type", "QVObject3DTransformBase"},
                           {"FpsInfo", dictionary({{"isRenderToTexture", true},
                                                   {"textureSize", "32,32"},
                                                   {"textureMapKey", key},
                                                   {"RenderDepth", double(depth)}})},
                           {"childNode", Value(std::move(children))}});
    };
    const auto showing = [](const char* key, float width) {
        Dictionary info = quad("QVQuadObject3D", "", width);
        info["TextureInfo"] = dictionary({{"textureType", "RTTTexture"}, {"textureMapKey", key}});
        return Value(info);
    };
    // The inner target: four colours. The outer one: the inner in its middle over white, drawn after it.
    const Value white = Value(quad("QVQuadObject3D", picture("white.png", {kWhite})));
    add(drawnInto(
        "outer",
        {drawnInto("inner", {Value(quad("QVQuadObject3D", fourColors()))}, 2), white, showing("inner", 32)},
        1));
    add(showing("outer", 64));
    draw(0, kBlack);
    EXPECT_TRUE(isNear(at(4, 30), kWhite)) << "the outer target goes on after the inner one";
    EXPECT_TRUE(isNear(at(22, 4), kRed));
    EXPECT_TRUE(isNear(at(42, 4), kGreen));
    EXPECT_TRUE(isNear(at(22, 60), kBlue));
    EXPECT_TRUE(isNear(at(60, 30), kWhite));
}

TEST_F(QuadTest, AMaskOverANodesOwnPictureIsUprightToo) {
    const std::string mask = picture("mask.png", {kWhite, kBlack}, 1);  // shows the upper half
    Dictionary info = quad("QVQuadMaskObject3D", "");
    info["MaskInfo"] = dictionary({{"textureType", "image"}, {"maskTextureName", Value(mask)}});
    // Its rows lie the other way round.
    auto drawn = std::make_shared<QVFrameBufferToTexture>(8, 8);
    for (Painter* painter :
         {static_cast<Painter*>(&painters.gl), static_cast<Painter*>(&painters.software)}) {
        painter->beginTarget(*drawn);
        painter->draw(QuadDraw{.corners = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0},
                               .look = ColorLook{.color = {0, 1, 0, 1}},
                               .state = {}});
        painter->endTarget();
    }
    scene->setRenderToTexture("drawn", drawn);
    info["TextureInfo"] = dictionary({{"textureType", "RTTTexture"}, {"textureMapKey", "drawn"}});
    add(info);
    draw(0, kBlue);
    EXPECT_TRUE(isNear(at(30, 8), kGreen));
    EXPECT_TRUE(isNear(at(30, 56), kBlue));
}

TEST_F(QuadTest, MissingMaskDrawsNothingAndIsReported) {
    Dictionary info = quad("QVQuadMaskObject3D", picture("red.png", {kRed}));
    info["MaskInfo"] = dictionary({{"textureType", "image"}, {"texture", Value(path("none.png"))}});
    info["name"] = "veil";
    show(info, 0, kBlue);
    EXPECT_TRUE(isNear(at(30, 8), kBlue));
    const auto entries = reported();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].node, "veil");
    EXPECT_EQ(entries[0].name, path("none.png"));
}

TEST_F(QuadTest, GradientRunsAcrossTheQuadAndItsFirstEndMoves) {
    Dictionary info = quad("QVQuadTextureRenderSelectShaderObject3D", picture("red.png", {kRed}));
    info["RenderInfo"] =
        dictionary({{"renderType", "QVAlphaGradualNoLight"},
                    {"startAlpha", "0,0"},
                    {"endAlpha", "1,1"},
                    {"interpolation", 0},
                    {"AnimationInfo", keys("startStartAlpha", "0,0", "endStartAlpha", "0,1")}});
    show(info, 0, kBlack);
    EXPECT_LT(at(2, 30)[0], 20);
    EXPECT_NEAR(at(32, 30)[0], 128, 6);
    EXPECT_GT(at(61, 30)[0], 235);
    draw(10, kBlack);
    EXPECT_TRUE(isNear(at(2, 30), kRed, 2));

    info["RenderInfo"] = dictionary({{"renderType", "Another"}});
    show(info, 0, kBlack);
    EXPECT_EQ(at(61, 30), kBlack);
}

TEST_F(QuadTest, ACustomShaderTakesTheOneVariableAndGivesStraightColours) {
    const auto write = [&](const std::string& name, const std::string& text) {
        platform::writeFileAtomically(path(name), text);
    };
    write("tint.vsh",
          "attribute vec4 position; attribute vec4 inputTextureCoordinate; uniform mat4 u_mvpMatrix;"
          "varying vec2 at; void main() { gl_Position = u_mvpMatrix * position; at = "
          "inputTextureCoordinate.xy; }");
    write("tint.fsh",
          "precision mediump float; uniform sampler2D videoFrame; uniform float aplae; varying vec2 at;"
          "void main() { gl_FragColor = vec4(texture2D(videoFrame, at).r, aplae, 0.0, 0.5); }");
    write(
        "tint.plist",
        "<plist><dict><key>Files</key><array><string>tint.vsh</string><string>tint.fsh</string></array>"
        "<key>Attributes</key><array><string>position</string><string>inputTextureCoordinate</string></array>"
        "<key>Uniforms</key><array><string>u_mvpMatrix</string><string>videoFrame</string>"
        "<string>aplae</string></array></dict></plist>");
    Dictionary info = quad("QVQuadCustomShaderOneVariable", picture("red.png", {kRed}));
    info["CustomShaderInfo"] = dictionary({{"startOneVariable", 0.5}});
    show(info, 0, kBlack);
    EXPECT_EQ(at(30, 30), kBlack) << "drawn without a shader";
    info["FpsInfo"] = dictionary({{"customShaderPath", Value(path("tint.plist"))}});
    show(info, 0, kBlack);
    EXPECT_TRUE(isNear(at(30, 30), {128, 64, 0, 255}, 2)) << "its colours are straight";
}

TEST_F(QuadTest, BlurredCopyFillsTheBoxBehindAFittedQuadOnly) {
    const std::string wide = picture("wide.png", std::vector<Pixel>(128 * 64, kRed), 128);
    for (const int mode : {1, 2}) {
        Dictionary info = quad("QVQuadObject3D", wide);
        info["QuadInfo"] = dictionary({{"modelWidth", 32},
                                       {"modelHeight", 64},
                                       {"quadObject3DContentMode", mode},
                                       {"backgroundRenderMode", 1}});
        show(info, 0, kBlack);
        EXPECT_TRUE(isNear(at(32, 32), kRed, 3));
        // Above the fitted quad there is the blur; a filling quad overhangs its box on both sides instead.
        EXPECT_TRUE(isNear(at(32, 4), kRed, 3)) << mode;
        EXPECT_TRUE(isNear(at(4, 4), mode == 1 ? kBlack : kRed, 3)) << mode;
    }
}

TEST_F(QuadTest, TheBlurRunsAlongTheDiagonalOnly) {
    std::vector<Pixel> dot(64 * 64, kBlack);
    for (int y = 8; y < 12; ++y)
        for (int x = 30; x < 34; ++x) dot[size_t(y * 64 + x)] = kWhite;
    Dictionary info = quad("QVQuadObject3D", picture("dot.png", dot, 64));
    info["QuadInfo"] = dictionary({{"modelWidth", 32},
                                   {"modelHeight", 64},
                                   {"quadObject3DContentMode", 1},
                                   {"backgroundRenderMode", 1}});
    show(info);
    // The whole picture fills 32 x 64 pixels: the dot lies at (32, 10), and steps of two texels to the right
    // and down are one pixel and two.
    const auto level = [&](int right, int down) { return int(at(32 + right, 10 + down)[0]); };
    EXPECT_GT(level(0, 0), 15);
    EXPECT_LT(level(0, 0), 120) << "the dot itself is spread";
    EXPECT_GT(level(2, 4), 10);
    EXPECT_GT(level(-2, -4), 10);
    EXPECT_EQ(level(-2, 4), 0);
    EXPECT_EQ(level(2, -4), 0);
    EXPECT_EQ(level(0, 5), 0);
    EXPECT_EQ(level(5, 0), 0);
}

TEST_F(QuadTest, FramesShowAPictureAFilteredPictureOrAColour) {
    const auto drawFrame = [&](Dictionary frame, const std::vector<Pixel>& colors, int64_t number = 0) {
        newScene();
        const int width = colors.size() == 1 ? 1 : 64;
        Dictionary info = quad("QVQuadFrameObject3D", picture("frame.png", colors, width));
        if (!frame.empty()) info["FrameInfo"] = Value(std::move(frame));
        info["FpsInfo"] = frames(0, 8);
        add(info);
        for (int64_t shown = 0; shown <= number; ++shown) draw(shown, kBlack);
    };
    const std::vector<Pixel> orange{{200, 100, 0, 255}};
    drawFrame({}, orange);
    EXPECT_TRUE(isNear(at(32, 32), orange[0]));
    drawFrame({{"frameType", "color"}, {"frameColor", "0,1,0,0.5"}}, orange);
    EXPECT_TRUE(isNear(at(32, 32), {0, 128, 0, 255}, 1));
    drawFrame({{"frameType", "filter"}, {"filterType", "negative"}, {"filterRange", 0.5}}, orange);
    EXPECT_TRUE(isNear(at(32, 32), {128, 128, 128, 255}));
    drawFrame({{"frameType", "filter"},
               {"frameWidth", 0.25},
               {"frameColor", "0,0,1,1"},
               {"pictureColor", "0.5,1,1,1"}},
              orange);
    EXPECT_TRUE(isNear(at(14, 32), kBlue));
    EXPECT_TRUE(isNear(at(32, 50), kBlue));
    EXPECT_TRUE(isNear(at(18, 18), {100, 100, 0, 255}));

    // A picture that grows brighter from left to right and is red in its upper half.
    std::vector<Pixel> slope;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x) slope.push_back({uint8_t(y < 32 ? 255 : 0), uint8_t(x * 4), 0, 255});
    drawFrame({{"frameType", "filter"}, {"filterType", "mosaic"}, {"pixelSize", 16}}, slope);
    EXPECT_EQ(at(17, 8), at(30, 8));
    EXPECT_GT(at(33, 8)[1], at(30, 8)[1] + 40);
    drawFrame({{"frameType", "filter"}, {"isReflection", true}}, slope);
    EXPECT_EQ(at(32, 60)[0], 255);
    const auto greenAt = [&](int64_t number) {
        drawFrame({{"frameType", "filter"}, {"filterType", "wave"}}, slope, number);
        return int(at(32, 0)[1]);
    };
    EXPECT_GT(greenAt(6), greenAt(2) + 10) << "the wave runs on";
    EXPECT_NEAR(greenAt(0), 32 * 4, 6);
}

}  // namespace multiscene::testing
