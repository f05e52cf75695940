// What the painters draw, pixel by pixel, and each beside the other.
#include <glm/gtc/matrix_transform.hpp>
#include <random>

#include "TwoPainters.h"

namespace multiscene {
namespace {

using testing::isNear;
using testing::PaintedPicture;
using testing::Pixel;
using testing::TwoPainters;

const glm::mat4 identity(1);
constexpr Pixel nothing{0, 0, 0, 0}, white{255, 255, 255, 255};

/// Pixels in rows, colours multiplied by alpha.
Texture textureOf(const std::vector<Pixel>& pixels, int width = 1) {
    platform::Bitmap bitmap(width, int(pixels.size()) / width);
    for (size_t i = 0; i < pixels.size(); ++i) std::ranges::copy(pixels[i], &bitmap.rgba[4 * i]);
    std::vector<platform::Bitmap> levels;
    levels.push_back(std::move(bitmap));
    Texture texture;
    texture.setLevels(std::move(levels), true);
    return texture;
}

/// Over the whole picture, upright.
QuadDraw quadOf(Texture* texture, Look look, const glm::mat4& textureMatrix = identity) {
    return {.corners = {-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0},
            .textureCoordinates = {0, 1, 1, 1, 1, 0, 0, 0},
            .textureMatrix = textureMatrix,
            .texture = texture,
            .look = std::move(look),
            .state = {}};
}

class PainterTest : public ::testing::Test {
  protected:
    Pixel shown(const Pixel& color, Look look) {
        Texture texture = textureOf({color});
        const QuadDraw quad = quadOf(&texture, std::move(look));
        return painters.paint(4, 4, nothing, [&](Painter& painter) { painter.draw(quad); }).at(1, 1);
    }

    TwoPainters painters;
};

TEST_F(PainterTest, AKeyedPictureKeepsNoKeyColour) {
    const glm::vec4 green(0.1f, 0.8f, 0.2f, 1);
    const auto keyed = [&](const Pixel& color, float softEdge = 0.5f) {
        Pixel result = shown(color, KeyLook{.color = green, .softEdge = softEdge});
        for (size_t c = 0; c < 3 && result[3]; ++c)
            result[c] = uint8_t(std::min(255, result[c] * 255 / result[3]));
        return result;
    };
    const auto mixed = [&](const glm::vec3& front, float opacity, float softEdge = 0.5f) {
        const glm::vec3 color = glm::mix(glm::vec3(green), front, opacity) * 255.0f;
        return keyed({uint8_t(color.r), uint8_t(color.g), uint8_t(color.b), 255}, softEdge);
    };
    EXPECT_EQ(mixed({0, 0, 0}, 0)[3], 0) << "the key itself";
    EXPECT_EQ(keyed({22, 165, 46, 255})[3], 0) << "a shadow on the backdrop";
    EXPECT_EQ(keyed({60, 220, 80, 255})[3], 0) << "a bright spot on the backdrop";
    struct Rim {
        const char* of;
        glm::vec3 front;
        int tint;  ///< by which green may exceed its share of the front's red
    };
    for (const Rim& rim :
         {Rim{"brown hair", {0.2f, 0.15f, 0.1f}, 8}, Rim{"blond hair", {0.8f, 0.65f, 0.3f}, 6},
          Rim{"orange hair", {0.9f, 0.5f, 0.1f}, 32}, Rim{"skin", {0.9f, 0.7f, 0.6f}, 14},
          Rim{"red cloth", {0.8f, 0.2f, 0.25f}, 102}}) {
        int previous = 0;
        for (const float opacity : {0.4f, 0.5f, 0.6f}) {
            const Pixel edge = mixed(rim.front, opacity);
            EXPECT_GT(edge[3], previous) << rim.of << ": the edge is soft";
            previous = std::min<int>(edge[3], 254);
            EXPECT_LE(edge[1], float(edge[0]) * rim.front.g / rim.front.r + float(rim.tint))
                << rim.of << " at " << opacity;
        }
    }
    EXPECT_TRUE(isNear(mixed({0.5f, 0.5f, 0.5f}, 0.5f), {128, 128, 128, 127}, 5)) << "glass keeps its grey";
    for (const Pixel& front : {Pixel{230, 180, 150, 255}, Pixel{255, 255, 0, 255}, Pixel{0, 255, 255, 255},
                               Pixel{250, 250, 250, 255}, Pixel{10, 10, 10, 255}, Pixel{200, 20, 30, 255}})
        EXPECT_TRUE(isNear(keyed(front), front)) << "what is no green stays";
    EXPECT_EQ(mixed({0.5f, 0.5f, 0.5f}, 0.2f, 0)[3], 0) << "a hard edge";
    EXPECT_EQ(mixed({0.5f, 0.5f, 0.5f}, 0.3f, 0)[3], 255);
}

/// Smooth, so that rounded places do not matter.
std::vector<Pixel> smoothColours(bool isOpaque) {
    std::vector<Pixel> colours;
    for (int i = 0; i < 64 * 64; ++i) {
        const int x = i % 64, y = i / 64, alpha = isOpaque ? 255 : 255 - x * 2;
        colours.push_back({uint8_t(alpha * y / 64), uint8_t(alpha * (64 - y) / 64), uint8_t(alpha * x / 128),
                           uint8_t(alpha)});
    }
    return colours;
}

/// Numbers, places and lights by chance.
class Chance {
  public:
    explicit Chance(unsigned seed) : random_(seed) {}

    unsigned below(unsigned end) { return unsigned(random_() % end); }
    float among(double from, double to) {
        return float(from + (to - from) * double(random_() % 10000) / 10000);
    }
    glm::vec3 vector(double from, double to) { return {among(from, to), among(from, to), among(from, to)}; }
    Light light(const glm::vec3& position) {
        return {.kind = LightKind(below(3) + 1),
                .position = position,
                .ambient = vector(0, 0.1),
                .diffuse = vector(0, 0.6),
                .specular = below(2) ? vector(0, 0.5) : glm::vec3(0),
                .shininess = below(2) ? float(below(80)) : among(0, 40),
                .spotDirection = vector(-1, 1),
                .spotExponent = below(2) ? float(below(8)) : among(0, 6),
                .spotAngle = among(0.2, 1.2)};
    }

  private:
    std::mt19937 random_;
};

TEST_F(PainterTest, RandomQuadsLookAlikeWithAnyLookAndBlendFunction) {
    Chance chance(11);
    Texture picture = textureOf(smoothColours(false), 64);
    Texture mask = textureOf({white, {60, 60, 60, 255}, {60, 60, 60, 255}, white}, 2);
    const Look looks[] = {PlainLook{.opacity = 0.7f},
                          PlainLook{.opacity = 1.4f},
                          ColorLook{{0.3f, 0.9f, 1.2f, 0.6f}, 1.4f},
                          MaskLook{.mask = &mask, .maskCoordinates = {0, 1, 1, 1, 1, 0, 0, 0}},
                          GradientLook{{0.2f, 1}, {0.9f, 0.1f}, 3},
                          GradientLook{{0.2f, 1.6f}, {0.9f, -0.1f}, 0},
                          FilterLook{.type = 2, .pictureSize = {64, 64}},
                          FilterLook{.type = 3, .pictureSize = {64, 64}},
                          FilterLook{.type = 5, .pictureSize = {64, 64}},
                          ColorLook{{0.8f, 0.5f, 0.1f, 0.6f}, 0.5f},
                          BlurLook{.pictureSize = {64, 64}}};
    const uint32_t factors[] = {0, 1, 768, 769, 770, 771, 772, 773, 774, 775, 776};
    painters.edgePixels = 1000;  // of 96 * 96: the outlines of two quads
    for (int trial = 0; trial < 120; ++trial) {
        const BlendFunction blend =
            trial % 3 ? BlendFunction{factors[chance.below(11)], factors[chance.below(11)]} : BlendFunction();
        const auto camera = glm::perspective(1.0f, 1.0f, 0.1f, 10.0f);
        std::vector<QuadDraw> quads;
        for (int i = 0; i < 2; ++i) {
            QuadDraw quad = quadOf(&picture, looks[chance.below(unsigned(std::size(looks)))]);
            glm::mat4 place =
                glm::translate(identity, {chance.among(-0.5, 0.5), chance.among(-0.5, 0.5), -2});
            place = glm::rotate(place, chance.among(0, 6), {0, 0, 1});
            if (trial % 2) place = glm::rotate(place, chance.among(-1, 1), {chance.among(-1, 1), 1, 0});
            quad.mvpMatrix = camera * place;
            quads.push_back(quad);
        }
        SCOPED_TRACE("trial " + std::to_string(trial) + ", looks " + std::to_string(quads[0].look.index()) +
                     " and " + std::to_string(quads[1].look.index()) + ", factors " +
                     std::to_string(blend.source) + " " + std::to_string(blend.destination));
        painters.paint(
            96, 96, {90, 40, 20, 200},
            [&](Painter& painter) {
                painter.setBlendFunction(blend);
                for (const QuadDraw& quad : quads) painter.draw(quad);
            },
            6);
    }
}

/// Everything in its place, whoever draws it.
TEST_F(PainterTest, WhatOnlyGLDrawsLiesBetweenWhatTheProcessorPaints) {
    Texture red = textureOf({{255, 0, 0, 255}}), green = textureOf({{0, 128, 0, 128}}),
            blue = textureOf({{0, 0, 255, 255}});
    for (const bool adds : {false, true}) {
        const auto drawing = [&](Painter& painter) {
            painter.draw(quadOf(&red, PlainLook{}));
            QuadDraw deep = quadOf(&green, GradientLook{{0, 1}, {1, 1}});
            deep.mvpMatrix = glm::scale(identity, glm::vec3(0.5f, 1, 1));
            painter.setDepthTest(true);
            if (adds) painter.setBlendFunction({1, 1});
            painter.draw(deep);
            painter.resetState();
            QuadDraw front = quadOf(&blue, PlainLook{});
            front.mvpMatrix = glm::scale(identity, glm::vec3(1, 0.5f, 1));
            painter.draw(front);
        };
        const auto picture = painters.paint(8, 8, nothing, drawing);
        EXPECT_EQ(picture.at(0, 0), (Pixel{255, 0, 0, 255}));
        EXPECT_TRUE(isNear(picture.at(4, 0), adds ? Pixel{255, 128, 0, 255} : Pixel{127, 128, 0, 255}));
        EXPECT_EQ(picture.at(4, 4), (Pixel{0, 0, 255, 255}));
    }
}

/// A box with normals, two triangles a side, that takes light.
struct LitBox {
    std::vector<MeshVertex> corners;
    MeshDraw draw;

    LitBox(Texture* texture, const glm::mat4& camera, const glm::mat4& place) {
        for (int axis = 0; axis < 3; ++axis)
            for (const float side : {-1.0f, 1.0f}) addSide(axis, side);
        draw.corners = corners;
        draw.sides = MeshSides::Both;
        draw.shader = "normal_lightShader";
        draw.texture = texture;
        draw.cornerCoordinates = {0, 1, 1, 1, 1, 0, 0, 0};
        draw.modelMatrix = place;
        draw.normalMatrix = glm::mat4(glm::transpose(glm::inverse(glm::mat3(place))));
        draw.mvpMatrix = camera * place;
        draw.isOpaque = texture && texture->isOpaque();
    }

  private:
    void addSide(int axis, float side) {
        glm::vec3 normal(0), up(0, 1, 0);
        normal[axis] = side;
        if (axis == 1) up = {0, 0, -side};
        const glm::vec3 right = glm::cross(up, normal);
        for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}})
            corners.push_back({.position = normal + float(x) * right + float(y) * up,
                               .normal = normal,
                               .textureCoordinate = {float(x + 1) / 2, float(1 - y) / 2}});
    }
};

TEST_F(PainterTest, AWallLooksAlikeInAnyLight) {
    Chance chance(7);
    Texture opaque = textureOf(smoothColours(true), 64);
    painters.edgePixels = 100;  // of 128 * 128: rims of cones
    for (int trial = 0; trial < 25; ++trial) {
        glm::mat4 place = glm::translate(identity, {0, 0, -3});
        place = glm::rotate(place, chance.among(-0.3, 0.3), chance.vector(-1, 1));
        LitBox wall(&opaque, glm::perspective(1.0f, 1.0f, 0.5f, 20.0f), glm::scale(place, {6, 6, 0.5f}));
        for (unsigned lights = 1 + chance.below(3); lights > 0; --lights)
            wall.draw.lights.push_back(
                chance.light({chance.among(-2, 2), chance.among(-2, 2), chance.among(-2, 0)}));
        SCOPED_TRACE("trial " + std::to_string(trial));
        painters.paint(128, 128, nothing, [&](Painter& painter) { painter.draw(wall.draw); });
    }
}

TEST_F(PainterTest, BoxesLookAlikeHoweverTheyAreDrawn) {
    Chance chance(5);
    Texture opaque = textureOf(smoothColours(true), 64), clear = textureOf(smoothColours(false), 64);
    const glm::mat4 camera = glm::perspective(1.0f, 1.0f, 0.5f, 20.0f);
    const BlendFunction functions[] = {{}, {}, {}, {770, 1}, {1, 1}, {774, 771}};
    painters.edgePixels = 1200;  // of 128 * 128: the outlines of four boxes and their sides, rims of cones
    for (int trial = 0; trial < 25; ++trial) {
        std::vector<LitBox> boxes;
        boxes.reserve(4);
        for (int i = 0; i < 4; ++i) {
            // Some stand around the eye.
            glm::mat4 place =
                glm::translate(identity, {chance.among(-2, 2), chance.among(-2, 2), chance.among(-9, -1)});
            place = glm::rotate(place, chance.among(0, 6), chance.vector(-1, 1));
            place = glm::scale(place, chance.vector(0.3, 1.4));
            MeshDraw& draw = boxes.emplace_back(chance.below(2) ? &opaque : &clear, camera, place).draw;
            if (chance.below(4) == 0) draw.color = glm::vec4(chance.vector(0, 1), chance.among(0.2, 1));
            if (chance.below(4) == 0) draw.textureMatrix = glm::scale(identity, glm::vec3(1.7f, 2.3f, 1));
            draw.mayRepeat = chance.below(2);
            draw.alphaIsOpacity = chance.below(2);
            if (draw.alphaIsOpacity && chance.below(2)) draw.fade = 0.3f;
            draw.isOpaque = draw.isOpaque && !draw.color && draw.fade == 0;
            if (chance.below(3) == 0) draw.sides = MeshSides::Outer;
            for (unsigned lights = chance.below(4); lights > 0; --lights)
                draw.lights.push_back(chance.light(chance.vector(-6, 6)));
        }
        const unsigned turn = chance.below(100);
        SCOPED_TRACE("trial " + std::to_string(trial));
        painters.paint(
            128, 128, {90, 40, 20, 255},
            [&](Painter& painter) {
                for (size_t i = 0; i < boxes.size(); ++i) {
                    painter.resetState();
                    painter.setBlendFunction(functions[(turn + 5 * i) % std::size(functions)]);
                    painter.setDepthTest((turn + i) % 3 != 0);
                    painter.draw(boxes[i].draw);
                }
            },
            4);
    }
}

TEST_F(PainterTest, WhatStandsStillIsPaintedTheSameInEveryFrame) {
    std::vector<Pixel> colours;
    for (int i = 0; i < 32 * 32; ++i)
        colours.push_back({uint8_t(i * 7), uint8_t(i / 4), uint8_t(i * 3), 255});
    Texture photo = textureOf(colours, 32);
    Texture mask = textureOf({white, {60, 60, 60, 255}}, 2);
    const auto camera = glm::perspective(1.0f, 1.0f, 0.1f, 10.0f);
    const auto drawing = [&](Painter& painter) {
        int turn = 0;
        for (const Look& look : {Look(PlainLook{}), Look(PlainLook{.opacity = 0.6f}),
                                 Look(MaskLook{.mask = &mask, .maskCoordinates = {0, 1, 1, 1, 1, 0, 0, 0}}),
                                 Look(GradientLook{{0, 1}, {1, 0}, 1}),
                                 Look(FilterLook{.type = 4, .pixelSize = 5, .pictureSize = {32, 32}})}) {
            QuadDraw quad = quadOf(&photo, look);
            glm::mat4 place = glm::translate(identity, {0.3f * float(turn % 3) - 0.4f, 0.1f, -3});
            place = glm::rotate(place, 0.4f * float(turn++), {0.2f, 0.1f, 1});
            quad.mvpMatrix = turn == 1 ? glm::scale(identity, {0.71f, 0.83f, 1}) : camera * place;
            painter.draw(quad);
        }
    };
    const auto paint = [&] { return TwoPainters::paint(painters.software, 96, 80, {9, 9, 9, 255}, drawing); };
    const PaintedPicture first = paint();
    for (int frame = 1; frame < 4; ++frame) EXPECT_EQ(paint().pixels, first.pixels) << "frame " << frame;
    photo = textureOf({{255, 0, 0, 255}});  // another picture, perhaps in the same memory
    EXPECT_NE(paint().pixels, first.pixels);
}

TEST(SoftwarePainter, AsksForNoGLForPicturesMeshesAndDepths) {
    platform::FileGate gate;
    SoftwarePainter painter(
        []() -> std::shared_ptr<platform::GLContext> {
            ADD_FAILURE() << "GL was asked for";
            return platform::GLContext::create();
        },
        gate, 1);
    Texture red = textureOf({{255, 0, 0, 255}});
    LitBox box(&red, identity, glm::scale(identity, glm::vec3(0.5f)));
    box.draw.lights = {{.kind = LightKind::Point, .diffuse = glm::vec3(1)}};
    painter.makeCurrent();
    TwoPainters::paint(painter, 4, 4, nothing, [&](Painter& it) {
        it.draw(quadOf(&red, PlainLook{}));
        it.setDepthTest(true);
        it.draw(quadOf(&red, PlainLook{}));
        it.draw(box.draw);
    });
    painter.release();
    EXPECT_EQ(painter.device(), "");
}

}  // namespace
}  // namespace multiscene
