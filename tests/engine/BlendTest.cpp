// Opacity and masks under the blend functions that templates use: what each node kind adds to the picture.
#include "DrawableFixture.h"
#include "PvrBytes.h"
#include "platform/base/File.h"

namespace multiscene::testing {

namespace {

constexpr Pixel backdrop{60, 120, 30, 255};

struct Function {
    const char *source, *destination;
};

/// The blended picture of a straight colour, 0 to 1, over the backdrop.
Pixel blended(const Function& function, const glm::vec3& color, float alpha, float opacity) {
    const glm::vec3 there = glm::vec3(backdrop[0], backdrop[1], backdrop[2]) / 255.0f;
    const std::string source = function.source, destination = function.destination;
    const glm::vec3 sent = color * (source == "ONE" ? alpha * opacity : source == "DST_COLOR" ? opacity : 1);
    const glm::vec3 added = sent * (source == "DST_COLOR"   ? there
                                    : source == "SRC_ALPHA" ? glm::vec3(alpha * opacity)
                                                            : glm::vec3(1));
    const glm::vec3 kept = there * (destination == "ONE_MINUS_SRC_ALPHA"   ? glm::vec3(1 - alpha * opacity)
                                    : destination == "ONE_MINUS_SRC_COLOR" ? 1.0f - sent
                                                                           : glm::vec3(1));
    const glm::vec3 result = glm::min(added + kept, 1.0f) * 255.0f + 0.5f;
    return {uint8_t(result.r), uint8_t(result.g), uint8_t(result.b), 255};
}

}  // namespace

class BlendFixture : public DrawableFixture {
  protected:
    /// A PVR file of one column.
    void writePvr(const std::string& name, uint32_t height, const Bytes& rgba) const {
        const Bytes file = pvr({.width = 1, .height = height}, rgba);
        platform::writeFileAtomically(path(name), std::string(file.begin(), file.end()));
    }
};

class BlendTest : public BlendFixture {
  protected:
    /// Draws the node at an opacity that lasts, its key frame named as the node's kind wants.
    void drawFaded(Dictionary info, const Function& function, const std::string& key, double opacity) {
        info["AnimationInfo"] = keys("start" + key, opacity, "end" + key, opacity);
        info["FpsInfo"] = dictionary(
            {{"isChangeBlend", true}, {"srcBlend", function.source}, {"dstBlend", function.destination}});
        show(info, 0, backdrop);
    }

    static Dictionary with(Dictionary info, const char* key, Dictionary value) {
        info[key] = Value(std::move(value));
        return info;
    }
};

TEST_F(BlendTest, OpacityFadesWhatADrawAddsWhateverTheFactors) {
    const std::string soft = picture("soft.png", {{200, 100, 40, 128}}),
                      white = picture("white.png", {kWhite});
    writePvr("soft1.pvr", 1, {200, 100, 40, 128});
    const glm::vec3 color = glm::vec3(200, 100, 40) / 255.0f;
    const float alpha = 128 / 255.0f;
    Dictionary sequence = quad("QVQuadDiaphaneityObject3D", "");
    sequence["TextureInfo"] = dictionary({{"textureType", "textureSerial"},
                                          {"imageType", 2},
                                          {"animationFps", 1},
                                          {"animationStart", 1},
                                          {"animationEnd", 1},
                                          {"animationName", path("soft")},
                                          {"animationExtension", "pvr"}});
    struct Case {
        const char* of;
        Dictionary info;
        const char* key;
    };
    const Case cases[] = {
        {"transparent quad", quad("QVQuadDiaphaneityObject3D", soft), "RenderAlpha"},
        {"PVR picture", sequence, "RenderAlpha"},
        {"masked quad",
         with(quad("QVQuadMaskObject3D", soft), "MaskInfo",
              {{"textureType", "image"}, {"texture", Value(white)}}),
         "MaskAlpha"},
        {"filtered picture", with(quad("QVQuadFrameObject3D", soft), "FrameInfo", {{"frameType", "filter"}}),
         "RenderAlpha"},
        {"coloured frame",
         with(quad("QVQuadFrameObject3D", ""), "FrameInfo",
              {{"frameType", "color"}, {"frameColor", "0.7843,0.3922,0.1569,0.502"}}),
         "RenderAlpha"},
    };
    for (const Function function : {Function{"SRC_ALPHA", "ONE_MINUS_SRC_ALPHA"},
                                    {"SRC_ALPHA", "ONE"},
                                    {"SRC_ALPHA", "ONE_MINUS_SRC_COLOR"},
                                    {"ONE", "ONE"},
                                    {"ONE", "ONE_MINUS_SRC_ALPHA"},
                                    {"ONE", "ONE_MINUS_SRC_COLOR"},
                                    {"DST_COLOR", "ONE"},
                                    {"DST_COLOR", "ONE_MINUS_SRC_ALPHA"}})
        for (const Case& it : cases)
            for (const float opacity : {1.0f, 0.5f, 0.0f}) {
                drawFaded(it.info, function, it.key, opacity);
                EXPECT_TRUE(isNear(at(30, 30), blended(function, color, alpha, opacity), 3))
                    << it.of << " at " << opacity << ", " << function.source << " " << function.destination;
            }
}

TEST_F(BlendTest, GradientsLettersAndLitMeshesAddWhatTheirAlphaShows) {
    const Function add{"ONE", "ONE"};
    Dictionary gradient =
        with(quad("QVQuadTextureRenderSelectShaderObject3D", picture("red.png", {kRed})), "RenderInfo",
             {{"renderType", "QVAlphaGradualNoLight"}, {"startAlpha", "0,0.25"}, {"endAlpha", "1,0.25"}});
    drawFaded(gradient, add, "RenderAlpha", 1);
    EXPECT_TRUE(isNear(at(30, 30), blended(add, {1, 0, 0}, 1, 0.25f), 2));
    for (const char* type : {"QVGLFont2DTextureFontObject3D", "QVGLFont3DExtrudeFontObject3D"}) {
        const Dictionary letters{{"type", Value(type)},
                                 {"TextureFontInfo", dictionary({{"textString", "\u2588"},
                                                                 {"fontName", "DejaVu Sans"},
                                                                 {"fontSize", 30},
                                                                 {"textColor", "1,0,0"}})}};
        drawFaded(letters, add, "RenderAlpha", 0.25);
        EXPECT_TRUE(isNear(at(32, 32), blended(add, {1, 0, 0}, 1, 0.25f), 3)) << type;
        EXPECT_TRUE(isNear(at(4, 4), backdrop)) << type;
    }
    const Dictionary plane{{"type", "QVPlaneObject3D"},
                           {"MeshInfo", dictionary({{"modelWidth", side}, {"modelHeight", side}})},
                           {"ColorInfo", dictionary({{"r", 1}, {"a", 0.25}})}};
    drawFaded(plane, add, "", 0);
    EXPECT_TRUE(isNear(at(32, 32), blended(add, {1, 0, 0}, 0.25f, 1), 2));
}

TEST_F(BlendTest, ABlendQuadOutsideItsFramesLeavesItsChildrenAlone) {
    Dictionary parent = quad("QVQuadBlendObject3D", picture("red.png", {kRed}), 8, 8);
    parent["BlendInfo"] = dictionary({{"srcBlend", 1}, {"decBlend", 1}});
    parent["FpsInfo"] = frames(2, 9);
    parent["childNode"] = array({Value(with(quad("QVQuadFrameObject3D", ""), "FrameInfo",
                                            {{"frameType", "color"}, {"frameColor", "0,0,1,1"}}))});
    show(parent, 1, kGreen);
    EXPECT_EQ(at(4, 4), kBlue);
    draw(2, kGreen);
    EXPECT_EQ(at(4, 4), (Pixel{0, 255, 255, 255})) << "children are added while it is due";
}

TEST_F(BlendTest, TheProgramsOwnOpacityShaderServesACustomShaderQuad) {
    Dictionary info = quad("QVQuadCustomShaderOneVariable", picture("half.png", {{255, 0, 0, 128}}));
    info["CustomShaderInfo"] = dictionary({{"startOneVariable", 0.5}});
    info["FpsInfo"] =
        dictionary({{"customShaderPath", "$(mainBundleResourcePathROOT)/shaders/diaphaneity_Shader.plist"}});
    show(info, 0, kBlue);
    EXPECT_TRUE(isNear(at(30, 30), {64, 0, 191, 255}, 2));
}

// Masks

class MaskTest : public BlendFixture {
  protected:
    /// A red quad behind the mask, over blue.
    void drawMasked(Dictionary mask, int64_t number = 0) {
        Dictionary info = quad("QVQuadMaskObject3D", picture("red.png", {kRed}));
        info["MaskInfo"] = Value(std::move(mask));
        add(info);
        draw(number, kBlue);
    }
};

TEST_F(MaskTest, ARenderTargetMasksUpright) {
    const Value halves = Value(quad("QVQuadObject3D", picture("halves.png", {kWhite, kBlack})));
    add(dictionary({{"type", "QVObject3DTransformBase"},
                    {"FpsInfo", dictionary({{"isRenderToTexture", true},
                                            {"textureSize", "32,32"},
                                            {"RenderDepth", 1},
                                            {"textureMapKey", "halves"}})},
                    {"childNode", array({halves})}}));
    drawMasked({{"textureType", "RTTTexture"}, {"textureMapKey", "halves"}});
    EXPECT_TRUE(isNear(at(30, 8), kRed));
    EXPECT_TRUE(isNear(at(30, 56), kBlue));
}

TEST_F(MaskTest, AQuadIsSeenThroughTheLettersOfATextOfAnySize) {
    drawMasked({{"textureType", "text2d"},
                {"textString", "\u2588"},
                {"fontName", "DejaVu Sans Mono"},
                {"fontSize", 200},
                {"textColor", "1,1,1,1"},
                {"textAlignment", 1},
                {"textHorizontalDrawAlignmentMode", 1},
                {"textVerticalDrawAlignmentMode", 1},
                {"textFixedResolution", "300,300"}});
    // A block of 120 of the 300 pixels, in the middle: 26 of the 64.
    for (const int y : {20, 32, 44}) {
        EXPECT_TRUE(isNear(at(22, y), kRed, 3)) << y;
        EXPECT_TRUE(isNear(at(41, y), kRed, 3)) << y;
        EXPECT_TRUE(isNear(at(15, y), kBlue, 3)) << y;
        EXPECT_TRUE(isNear(at(48, y), kBlue, 3)) << y;
    }
}

TEST_F(MaskTest, TheAlphaOfAMaskHidesWhetherItsColoursAreMultipliedOrNot) {
    const Pixel bright{255, 255, 255, 255}, half{255, 255, 255, 128}, grey{128, 128, 128, 255},
        dim{128, 128, 128, 128};
    picture("mask1.png", {bright, half, grey, dim});
    Bytes texels;
    for (const Pixel& pixel : {bright, half, grey, dim})
        texels.insert(texels.end(), pixel.begin(), pixel.end());
    writePvr("mask1.pvr", 4, texels);
    for (const bool isPvr : {false, true}) {
        newScene();
        drawMasked({{"textureType", "textureSerial"},
                    {"imageType", isPvr ? 2 : 0},
                    {"animationFps", 1},
                    {"animationStart", 1},
                    {"animationEnd", 1},
                    {"animationName", path("mask")},
                    {"animationExtension", isPvr ? "pvr" : "png"}});
        EXPECT_TRUE(isNear(at(30, 0), kRed, 5)) << "nothing of the lower edge, " << isPvr;
        EXPECT_TRUE(isNear(at(30, 8), kRed, 5)) << isPvr;
        EXPECT_TRUE(isNear(at(30, 24), {128, 0, 127, 255}, 5)) << isPvr;
        EXPECT_TRUE(isNear(at(30, 40), {128, 0, 127, 255}, 5)) << isPvr;
        EXPECT_TRUE(isNear(at(30, 56), {64, 0, 191, 255}, 5)) << isPvr;
    }
}

}  // namespace multiscene::testing
