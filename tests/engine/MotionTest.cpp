#include <gtest/gtest.h>

#include <cmath>
#include <glm/gtc/matrix_transform.hpp>
#include <optional>

#include "core/QVKeyAnimationOperators.h"
#include "tests/engine/FakeDriver.h"
#include "tween/ZBBezierModel.h"

namespace multiscene {
namespace {

class MotionTest : public ::testing::Test {
  protected:
    /// A group of the scene.
    std::shared_ptr<QVObject3DTransformBase> group(const platform::Value& info = dictionary({})) {
        auto node = multiscene::group(info);
        scene->addChild(node);
        return node;
    }

    /// One frame of one node, in the driver's order.
    void step(QVObject3DTransformBase& node, int64_t number) {
        node.updateData({number});
        scene->tweens().update();
        node.updateMatrix();
    }

    /// One turn of the scene, whose clock has a frame for it or not.
    void turn(std::optional<int64_t> number) {
        if (number) scene->setCurrentRenderTime(frame(*number));
        scene->updateData();
        scene->tweens().update();
        scene->updateMatrix();
        scene->renderComplete();
    }

    const std::vector<std::unique_ptr<QVTweenItem>>& tweens() const { return scene->tweens().items(); }

    FakeDriver driver;
    std::shared_ptr<QVScene3D> scene = QVScene3D::initRenderManager(driver);

    static platform::Value moving(platform::Value::Array items) {
        return dictionary({{"TransformArray", array(std::move(items))}});
    }

    static platform::Value item(int start, int end, const char* from, const char* to) {
        return dictionary(
            {{"sartFps", start}, {"endFps", end}, {"startTranslate", from}, {"endTranslate", to}});
    }
};

TEST_F(MotionTest, AnItemThatStartsWhereItsPredecessorEndsNeverMoves) {
    auto touching = group(moving({item(0, 10, "0,0,0", "10,0,0"), item(10, 20, "100,0,0", "200,0,0")}));
    auto apart = group(moving({item(0, 10, "0,0,0", "10,0,0"), item(11, 20, "100,0,0", "200,0,0")}));
    auto stalled = group(moving({item(5, 5, "1,0,0", "2,0,0"), item(7, 9, "100,0,0", "200,0,0")}));
    for (int64_t number = 0; number <= 25; ++number) {
        touching->updateData({number});
        apart->updateData({number});
        stalled->updateData({number});
        scene->tweens().update();
    }
    EXPECT_EQ(touching->x(), 9);
    EXPECT_FLOAT_EQ(apart->x(), 100 + 100 * 8.0f / 9);
    EXPECT_EQ(stalled->currentTransformIndex(), 0);
}

TEST_F(MotionTest, ARepeatedFrameStartsAndEndsNoItemTwice) {
    auto node = group(moving({item(0, 10, "0,0,0", "10,0,0"), item(10, 20, "100,0,0", "200,0,0")}));
    // A clock whose video gives a number twice, and one that ran dry.
    for (const auto& repeated : {std::optional<int64_t>(0), std::optional<int64_t>()}) {
        turn(0);
        turn(repeated);
        EXPECT_EQ(tweens().size(), 1u);
    }
    for (int64_t number = 1; number <= 10; ++number) turn(number);
    turn(std::nullopt);
    EXPECT_TRUE(tweens().empty());
    EXPECT_EQ(node->currentTransformIndex(), 1);
}

TEST_F(MotionTest, TheTextureFollowsTheRotationsEase) {
    auto node = group(fromJson(R"({"TransformArray": [
        {"sartFps": 0, "endFps": 4, "endRotate": "0,0,90", "rotateEase": 1, "textureEase": 0,
         "startTextureSize": "1,1", "endTextureSize": "0.5,0.5",
         "startTextureOrigin": "0,0", "endTextureOrigin": "0.5,0.25"},
        {"sartFps": 5, "endFps": 9, "startTextureOrigin": "0,0", "endTextureOrigin": "0.5,0.25"}]})"));
    for (int64_t number = 0; number <= 2; ++number) step(*node, number);
    EXPECT_FLOAT_EQ(node->textureMatrix()[3][0], 0.5f * 0.25f);
    EXPECT_FLOAT_EQ(node->textureMatrix()[0][0], 1 - 0.5f * 0.25f);
    EXPECT_NEAR(node->rotationZ(), 22.5f, 1e-3);
    for (int64_t number = 3; number <= 7; ++number) step(*node, number);
    EXPECT_FLOAT_EQ(node->textureMatrix()[3][0], 0.25f) << "linear where the item does not rotate";
}

TEST_F(MotionTest, MutableItemsComposeInOrderAndHoldNothing) {
    const platform::Value move = fromJson(R"({"transformType": 0, "fpsStart": 0, "fpsEnd": 10,
        "startTranslate": "0,0,0", "endTranslate": "10,0,0"})");
    const platform::Value grow = fromJson(R"({"transformType": 1, "fpsStart": 0, "fpsEnd": 10,
        "startScale": "2,2,2", "endScale": "2,2,2"})");
    const platform::Value ignored = dictionary({{"transformType", 7}, {"fpsStart", 0}, {"fpsEnd", 10}});
    auto scaledMove = group(dictionary({{"MutableTransformArray", array({grow, move, ignored})}}));
    auto plainMove = group(dictionary({{"MutableTransformArray", array({move, grow})}}));
    step(*scaledMove, 5);
    step(*plainMove, 5);
    EXPECT_EQ(scaledMove->mutableTransform()[3].x, 10);
    EXPECT_EQ(plainMove->mutableTransform()[3].x, 5);
    step(*plainMove, 11);
    EXPECT_EQ(plainMove->mutableTransform(), glm::mat4(1));
    auto appearing = group(
        dictionary({{"MutableTransformArray",
                     array({dictionary(
                         {{"transformType", 1}, {"fpsStart", 0}, {"fpsEnd", 4}, {"endScale", "1,1,1"}})})}}));
    step(*appearing, 0);
    EXPECT_EQ(appearing->mutableTransform()[0].x, 0);  // a missing start scales from zero
}

TEST_F(MotionTest, MutableRotationUsesTheShortConstant) {
    const platform::Value turn = fromJson(R"({"transformType": 2, "fpsStart": 0, "fpsEnd": 1,
        "startRotate": "0,90,0", "endRotate": "0,90,0"})");
    const auto movedBy = [this](const platform::Value& item, int64_t number) {
        auto node = group(dictionary({{"MutableTransformArray", array({item})}}));
        step(*node, number);
        return node->mutableTransform();
    };
    // 90 times 0.0174533 is a little more than a right angle.
    EXPECT_NEAR(movedBy(turn, 1)[0][0], -6.7e-7, 1.2e-7);
    const platform::Value oneFrame =
        dictionary({{"transformType", 0}, {"fpsStart", 3}, {"fpsEnd", 3}, {"endTranslate", "1,1,1"}});
    EXPECT_TRUE(std::isnan(movedBy(oneFrame, 3)[3].x));
    const platform::Value endless =
        dictionary({{"fpsStart", INT64_MIN}, {"fpsEnd", INT64_MAX}, {"endTranslate", "8,0,0"}});
    const float x = movedBy(endless, 3)[3].x;
    EXPECT_TRUE(x >= 0 && x <= 8) << x;
}

TEST_F(MotionTest, PathsDriveAxesAndEases) {
    const platform::Value line = dictionary({{"bezierIdentifier", "30001"},
                                             {"interpolationTotal", 4},
                                             {"controlPoints", array({"0,0", "100,40"})},
                                             {"interpolationXYZ", 21}});
    auto node =
        group(dictionary({{"BezierArray", array({line})},
                          {"MutableTransformArray", array({dictionary({{"transformType", 0},
                                                                       {"fpsStart", 0},
                                                                       {"fpsEnd", 4},
                                                                       {"endTranslate", "100,30001,30001"},
                                                                       {"iTranslate", 30001}})})}}));
    for (int64_t number = 0; number <= 2; ++number) step(*node, number);
    // Eased by the curve's second coordinate: 20 at the middle, so x is 20 times its way and y is past the
    // end.
    EXPECT_EQ(node->mutableTransform()[3].x, 2000);
    EXPECT_EQ(node->mutableTransform()[3].y, 30);
    EXPECT_EQ(node->mutableTransform()[3].z, 0);
}

/// The curve as a polynomial, not by the reduction that the engine uses.
glm::dvec2 cubicAt(const std::array<glm::dvec2, 4>& points, double t) {
    const double u = 1 - t;
    return u * u * u * points[0] + 3 * u * u * t * points[1] + 3 * u * t * t * points[2] +
           t * t * t * points[3];
}

TEST_F(MotionTest, CurvesGiveTheirPolynomialsValuesAtTheEasedTime) {
    const std::array<glm::dvec2, 4> road{{{-300, 40}, {-100, 900}, {250, -600}, {320, 10}}};
    const std::array<glm::dvec2, 4> bounce{{{0, 0}, {0.1, 0.9}, {0.4, 1.2}, {1, 1}}};
    const auto curve = [](const char* name, int axes, platform::Value::Array points) {
        return dictionary({{"bezierIdentifier", name},
                           {"interpolationTotal", 40},
                           {"controlPoints", array(std::move(points))},
                           {"interpolationXYZ", axes}});
    };
    auto node = group(
        dictionary({{"BezierArray", array({curve("30001", 31, {"-300,40", "-100,900", "250,-600", "320,10"}),
                                           curve("30002", 21, {"0,0", "0.1,0.9", "0.4,1.2", "1,1"})})},
                    {"TransformArray", array({dictionary({{"sartFps", 0},
                                                          {"endFps", 8},
                                                          {"translateEase", 1},
                                                          {"startTranslate", "0,0,0"},
                                                          {"endTranslate", "30001,64,30001"},
                                                          {"startScale", "1,1,1"},
                                                          {"endScale", "3,3,3"},
                                                          {"scaleEase", 30002}})})}}));
    for (int64_t number = 0; number < 8; ++number) {
        step(*node, number);
        const double progress = static_cast<double>(number) / 8;
        const glm::dvec2 place = cubicAt(road, std::floor(progress * progress * 40) / 40);
        EXPECT_NEAR(node->x(), place.x, 1e-3) << number;
        EXPECT_NEAR(node->y(), 64 * progress * progress, 1e-4) << number;
        EXPECT_NEAR(node->z(), place.y, 1e-3) << number;
        EXPECT_NEAR(node->scaleX(), 1 + 2 * cubicAt(bounce, progress).y, 1e-5) << number;
    }
}

TEST(ZBBezierModel, SamplesStopShortOfTheEndAndAreFoundByIndex) {
    auto model = ZBBezierModel::bezierWithInterpolationTotal(4);
    model.setInterpolationXYZ(12);
    model.computeBezierWithControlPoints({"0,0", "1,2"});
    EXPECT_EQ(model.recordAtTime(0.25f), (ZBBezierModel::Record{0.5, 0.25, 0, 0}));
    EXPECT_EQ(model.recordAtTime(1)[1], 0.75);
    EXPECT_EQ(model.recordAtTime(-0.1f)[1], 0.75);
    EXPECT_EQ(model.recordAtTime(std::nanf(""))[1], 0.75);
    auto hostile = ZBBezierModel::bezierWithInterpolationTotal(3);
    hostile.setInterpolationXYZ(-95);
    hostile.computeBezierWithControlPoints({"7", "", "1,1"});
    EXPECT_EQ(hostile.recordAtTime(0), (ZBBezierModel::Record{}));
    EXPECT_EQ(ZBBezierModel::bezierWithInterpolationTotal(-5).recordAtTime(0), (ZBBezierModel::Record{}));
}

TEST_F(MotionTest, ACurveWithoutPointsOrSamplesIsNone) {
    auto node = group(
        dictionary({{"BezierArray",
                     array({dictionary({{"bezierIdentifier", "30001"}, {"interpolationTotal", 4}}),
                            dictionary({{"bezierIdentifier", "30002"}, {"controlPoints", array({"1,1"})}}),
                            dictionary({{"bezierIdentifier", "30003"},
                                        {"interpolationTotal", 1},
                                        {"interpolationXYZ", 21},
                                        {"controlPoints", array({"5,6"})}})})}}));
    EXPECT_EQ(QVTweenItem::easeValueWithEase(30001, 0.25f, node.get()), 0.25f);
    EXPECT_EQ(QVTweenItem::easeValueWithEase(30002, 0.25f, node.get()), 0.25f);
    EXPECT_EQ(QVTweenItem::easeValueWithEase(30003, 0.25f, node.get()), 6);
}

TEST(QVKeyAnimationOperators, DeliversTheLastFrameAndThenLoadsTheNextKey) {
    const auto key = [](int start, int end, int ease) {
        return dictionary({{"sartFps", start}, {"endFps", end}, {"ease", ease}});
    };
    QVKeyAnimationOperators keys(platform::Value::Array{key(0, 2, 1), key(2, 3, 0)});
    struct Shown {
        size_t key;
        float eased, linear;
    };
    const std::optional<Shown> expected[] = {Shown{0, 0, 0}, Shown{0, 0.25f, 0.5f}, Shown{0, 1, 1},
                                             Shown{1, 1, 1}, std::nullopt};
    for (int64_t number = 0; number < 5; ++number) {
        const auto shown = keys.updateData(number, nullptr);
        ASSERT_EQ(shown.has_value(), expected[number].has_value()) << number;
        if (!shown) continue;
        EXPECT_EQ(shown->key, expected[number]->key) << number;
        EXPECT_EQ(shown->eased, expected[number]->eased) << number;
        EXPECT_EQ(shown->linear, expected[number]->linear) << number;
    }
    EXPECT_FALSE(QVKeyAnimationOperators(platform::Value::Array()).updateData(0, nullptr));
}

}  // namespace
}  // namespace multiscene
