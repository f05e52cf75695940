// What the program's own shaders draw, pixel by pixel.
#include <epoxy/gl.h>

#include <glm/gtc/matrix_transform.hpp>

#include "GlFixture.h"
#include "core/GLESUtils/GLState.h"
#include "opengl2.0/TexturedQuad.h"

namespace multiscene {
namespace {

using testing::isNear;
using testing::Pixel;

constexpr std::array<float, 12> fullSquare{-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0};
constexpr std::array<float, 8> upright{0, 1, 1, 1, 1, 0, 0, 0};
const glm::mat4 identity(1);

class ShaderPictureTest : public testing::GlFixture {
  protected:
    ShaderPictureTest() {
        target_.createFrameBufferObject();
        target_.bindRenderToTextureFramebuffer();
    }

    std::shared_ptr<Shader> shader(const std::string& name) {
        auto result = ShaderManager::sharedManager().createShader(name, name + ".plist");
        result->useShader();
        return result;
    }

    /// Draws one full quad without blending: what the shader itself gives. Bottom row first.
    std::vector<Pixel> draw(Shader& shader, unsigned int texture, bool premultiplied = false,
                            const glm::mat4& textureMatrix = identity) {
        EXPECT_TRUE(drawTexturedQuad(shader, {.texture = texture,
                                              .mvpMatrix = identity,
                                              .textureMatrix = textureMatrix,
                                              .corners = {fullSquare.data(), upright.data()},
                                              .premultiplied = premultiplied}));
        return read(target_.frameBuffer(), 4, 4);
    }
    Pixel drawColor(Shader& shader, const Pixel& color, bool premultiplied = false) {
        return draw(shader, texture({color}).name(), premultiplied)[5];
    }

    QVFrameBufferToTexture target_{4, 4};
};

TEST_F(ShaderPictureTest, PremultipliedColoursComeOutStraight) {
    const auto straight = shader("diaphaneity_Shader");
    straight->setUniform("aplae", 1.0f);
    EXPECT_TRUE(isNear(drawColor(*straight, {100, 50, 0, 100}, true), {255, 128, 0, 100}));
    EXPECT_TRUE(isNear(drawColor(*straight, {100, 50, 0, 100}, false), {100, 50, 0, 100}, 0));
    EXPECT_TRUE(isNear(drawColor(*straight, {0, 0, 0, 0}, true), {0, 0, 0, 0}, 0));
    EXPECT_TRUE(isNear(drawColor(*straight, {201, 77, 13, 255}, true), {201, 77, 13, 255}, 0));
}

TEST_F(ShaderPictureTest, BlendingGivesTheSamePictureWhetherAlphaMultipliesTheColoursOrNot) {
    struct Function {
        uint32_t source, destination;
    };
    const Pixel backdrop{40, 200, 90, 255}, straight{255, 128, 0, 100}, premultiplied{100, 50, 0, 100};
    for (const Function function : {Function{GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA}, {GL_SRC_ALPHA, GL_ONE}}) {
        for (const char* name : {"normal_renderShader", "faded_Shader", "diaphaneity_Shader"}) {
            std::array<Pixel, 2> blended;
            for (const bool isPremultiplied : {false, true}) {
                const auto drawn = shader(name);
                const float ofColors = isPremultiplied ? 0.6f : 1;
                drawn->setUniform("aplae", 0.6f);
                drawn->setUniform("opacity", glm::vec4(ofColors, ofColors, ofColors, 0.6f));
                GLState::setDefaults();
                GLState::setBlendFunction(GL_ONE, GL_ZERO);
                drawColor(*shader("normal_renderShader"), backdrop);
                drawn->useShader();
                GLState::setBlendFunction(function.source, function.destination);
                blended[isPremultiplied] =
                    drawColor(*drawn, isPremultiplied ? premultiplied : straight, isPremultiplied);
            }
            EXPECT_TRUE(isNear(blended[1], blended[0], 2)) << name << " into " << function.destination;
            EXPECT_GT(blended[0][0], backdrop[0] + 40) << name;
        }
    }
    GLState::setBlendFunction(GL_ONE, GL_ONE);
    EXPECT_FALSE(GLState::canBlendPremultiplied());
    GLState::setBlendFunction(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_COLOR);
    EXPECT_FALSE(GLState::canBlendPremultiplied());
}

TEST_F(ShaderPictureTest, DrawsUprightAndMovedByTheTextureMatrix) {
    const Pixel red{255, 0, 0, 255}, blue{0, 0, 255, 255};
    const GLTexture picture = texture({red, red, blue, blue}, 1);
    const auto plain = shader("normal_renderShader");
    const auto still = draw(*plain, picture.name());
    EXPECT_EQ(still[0], blue) << "the first row in memory is at the top";
    EXPECT_EQ(still[15], red);
    const auto moved = draw(*plain, picture.name(), false, glm::translate(identity, glm::vec3(0, 0.5f, 0)));
    EXPECT_EQ(moved[13], blue);
    EXPECT_FALSE(drawTexturedQuad(*plain, {.texture = 0,
                                           .mvpMatrix = identity,
                                           .textureMatrix = identity,
                                           .corners = {fullSquare.data(), upright.data()}}));
}

TEST_F(ShaderPictureTest, OpacityAndMasksMultiplyAlphaOnly) {
    const Pixel color{200, 100, 50, 255};
    const auto faded = shader("faded_Shader");
    faded->setUniform("opacity", glm::vec4(1, 1, 1, 0.4f));
    EXPECT_TRUE(isNear(drawColor(*faded, color), {200, 100, 50, 102}));
    const auto diaphaneity = shader("diaphaneity_Shader");
    diaphaneity->setUniform("aplae", 0.4f);
    EXPECT_TRUE(isNear(drawColor(*diaphaneity, color), {200, 100, 50, 102}));

    const GLTexture picture = texture({color});
    const GLTexture mask =
        texture({{255, 255, 255, 255}, {128, 128, 128, 255}, {0, 0, 0, 255}, {0, 0, 0, 0}}, 4);
    for (const char* name : {"maskAlpha_Shader", "reversalMask_Shader"}) {
        const auto masked = shader(name);
        masked->setUniform("aplae", 1.0f);
        masked->setUniform("maskMatrix", identity);
        bindTexture(*masked, "frameTexture", 1, mask.name());
        const auto pixels = draw(*masked, picture.name());
        EXPECT_TRUE(isNear(pixels[0], {200, 100, 50, 255})) << name;
        EXPECT_TRUE(isNear(pixels[1], {200, 100, 50, 128})) << name;
        EXPECT_EQ(pixels[2][3], 0) << name;
        EXPECT_EQ(pixels[3][3], 0) << name;
    }
    const auto maskAlpha = shader("maskAlpha_Shader");
    maskAlpha->setUniform("aplae", 0.5f);
    bindTexture(*maskAlpha, "frameTexture", 1, mask.name());
    const auto half = glm::translate(identity, glm::vec3(0.5f, 0, 0));
    EXPECT_TRUE(isNear(draw(*maskAlpha, picture.name(), false, half)[0], {200, 100, 50, 128}))
        << "the mask stays where it is";
}

TEST_F(ShaderPictureTest, AlphaGradientsRunAlongTheirAxis) {
    const auto gradual = shader("alphaGradual_Shader");
    const GLTexture white = texture({{255, 255, 255, 255}});
    const auto alphas = [&](int interpolation, glm::vec2 start, glm::vec2 end) {
        gradual->useShader();
        gradual->setUniform("startAlpha", start);
        gradual->setUniform("endAlpha", end);
        gradual->setUniform("interpolation", interpolation);
        return draw(*gradual, white.name());
    };
    const auto across = alphas(0, {0, 0}, {1, 1});  // pixel centres at 1/8, 3/8, 5/8, 7/8
    EXPECT_NEAR(across[0][3], 32, 1);
    EXPECT_NEAR(across[3][3], 223, 1);
    EXPECT_EQ(across[0], across[12]);
    const auto down = alphas(1, {0, 1}, {0.5f, 0.2f});
    EXPECT_NEAR(down[12][3], 204, 1) << "an eighth from the top";
    EXPECT_NEAR(down[0][3], 51, 1) << "beyond the end";
    EXPECT_NEAR(alphas(2, {0, 0}, {1, 1})[0][3], 11, 1) << "smooth start";
    const auto wiped = alphas(0, {0.5f, 1}, {0.5f, 0});
    EXPECT_EQ(wiped[1][3], 255);
    EXPECT_EQ(wiped[2][3], 0);
}

TEST_F(ShaderPictureTest, ChromaKeyLeavesNoKeyColour) {
    const auto key = shader("chromaKey_Shader");
    const glm::vec4 green(0.1f, 0.8f, 0.2f, 1);
    key->setUniform("chromaKeyColor", green);
    key->setUniform("maxEclosion", 0.5f);
    const auto mixed = [&](const glm::vec3& front, float opacity) {
        const glm::vec3 color = glm::mix(glm::vec3(green), front, opacity) * 255.0f;
        return drawColor(*key, {uint8_t(color.r), uint8_t(color.g), uint8_t(color.b), 255});
    };
    EXPECT_EQ(mixed({0, 0, 0}, 0)[3], 0) << "the key itself";
    EXPECT_EQ(drawColor(*key, {22, 165, 46, 255})[3], 0) << "a shadow on the backdrop";
    EXPECT_EQ(drawColor(*key, {60, 220, 80, 255})[3], 0) << "a bright spot on the backdrop";

    struct Rim {
        const char* of;
        glm::vec3 front;
        int tint;  ///< by which green may exceed its share of the front's red
    };
    for (const Rim& rim :
         {Rim{"brown hair", {0.2f, 0.15f, 0.1f}, 4}, Rim{"blond hair", {0.8f, 0.65f, 0.3f}, 4},
          Rim{"orange hair", {0.9f, 0.5f, 0.1f}, 30}, Rim{"skin", {0.9f, 0.7f, 0.6f}, 12},
          Rim{"red cloth", {0.8f, 0.2f, 0.25f}, 100}}) {
        int previous = 0;
        for (const float opacity : {0.4f, 0.5f, 0.6f}) {
            const Pixel edge = mixed(rim.front, opacity);
            EXPECT_GT(edge[3], previous) << rim.of << ": the edge is soft";
            previous = std::min<int>(edge[3], 254);
            EXPECT_LE(edge[1], float(edge[0]) * rim.front.g / rim.front.r + float(rim.tint))
                << rim.of << " at " << opacity;
        }
    }
    EXPECT_TRUE(isNear(mixed({0.5f, 0.5f, 0.5f}, 0.5f), {128, 128, 128, 127}, 4)) << "glass keeps its grey";
    for (const Pixel& front : {Pixel{230, 180, 150, 255}, Pixel{255, 255, 0, 255}, Pixel{0, 255, 255, 255},
                               Pixel{250, 250, 250, 255}, Pixel{10, 10, 10, 255}, Pixel{200, 20, 30, 255},
                               Pixel{230, 128, 26, 255}})
        EXPECT_TRUE(isNear(drawColor(*key, front), front)) << "what is no green stays";
    EXPECT_TRUE(isNear(drawColor(*key, {160, 140, 40, 255}), {160, 140, 40, 255}, 12)) << "mustard nearly so";

    key->useShader();
    key->setUniform("maxEclosion", 0.0f);
    EXPECT_EQ(mixed({0.5f, 0.5f, 0.5f}, 0.2f)[3], 0) << "a hard edge";
    EXPECT_EQ(mixed({0.5f, 0.5f, 0.5f}, 0.3f)[3], 255);
}

TEST_F(ShaderPictureTest, LightsColourTheSurface) {
    const auto lit = shader("normal_lightShader");
    lit->setUniform("u_modelMatrix", identity);
    lit->setUniform("u_normalMatrix", identity);
    lit->setUniform("u_eyePosition", glm::vec3(0, 0, 5));
    lit->setUniform("lightEnable", 0);
    const Pixel color{200, 100, 50, 255};
    EXPECT_TRUE(isNear(drawColor(*lit, color), color)) << "without lights";

    // A directional light; without a normal array the attribute's current value is the normal.
    lit->useShader();
    glVertexAttrib3f(lit->attributeHandle("normal"), 0, 0, 1);
    lit->setUniform("lightEnable", 1);
    lit->setUniform("lightSourceNumber", 1);
    lit->setUniformStructOrArray("lightSourceArray[0].useLight", 2);
    lit->setUniformStructOrArray("lightSourceArray[0].lightPosition", glm::vec3(0, 3, 4));
    lit->setUniformStructOrArray("lightSourceArray[0].ambientMaterial", glm::vec3(0.2f));
    lit->setUniformStructOrArray("lightSourceArray[0].diffuseMaterial", glm::vec3(0.5f, 0, 0));
    EXPECT_TRUE(isNear(drawColor(*lit, color), {120, 20, 10, 255})) << "0.2 + 0.5 * 0.8 of the red";

    lit->useShader();
    lit->setUniformStructOrArray("lightSourceArray[0].useLight", 3);
    lit->setUniformStructOrArray("lightSourceArray[0].lightPosition", glm::vec3(0, 0, 1000));
    lit->setUniformStructOrArray("lightSourceArray[0].spotLightDirection", glm::vec3(0, 1, 0));
    lit->setUniformStructOrArray("lightSourceArray[0].spotLightCutOffAngle", 0.5f);
    EXPECT_TRUE(isNear(drawColor(*lit, color), {40, 20, 10, 255})) << "outside the cone only ambient light";
}

TEST_F(ShaderPictureTest, ColourShaderDrawsItsColour) {
    const auto shape = shader("color_renderShader");
    shape->setUniform("u_mvpMatrix", identity);
    shape->setUniform("SourceColor", glm::vec4(1, 0.4f, 0, 0.6f));
    drawQuadFan(shape->attributeHandle("position"), 0, {fullSquare.data(), nullptr});
    EXPECT_TRUE(isNear(read(target_.frameBuffer(), 4, 4)[5], {255, 102, 0, 153}));
}

}  // namespace
}  // namespace multiscene
