#include <epoxy/gl.h>

#include "DrawableFixture.h"
#include "core/QVLightBase.h"
#include "platform/base/Paths.h"

namespace multiscene::testing {

class LightTest : public DrawableFixture {
  protected:
    /// A light grey wall over the whole picture with lights of its own.
    void addWall(Value::Array lights, bool isLit = true, bool seenFromBehind = false, int z = 0) {
        const char* turn = seenFromBehind ? "0,3.14159265,0" : "0,0,0";  // radians without its end
        add(dictionary(
            {{"type", "QVPlaneObject3D"},
             {"TextureInfo", dictionary({{"textureType", "image"},
                                         {"texture", picture("wall.png", {{200, 200, 200, 255}})}})},
             {"MeshInfo", dictionary({{"modelWidth", side}, {"modelHeight", side}})},
             {"FpsInfo", dictionary({{"isLightEnable", isLit}})},
             {"TransformArray",
              array({dictionary(
                  {{"startTranslate", "0,0," + std::to_string(z)}, {"startRotate", turn}, {"endFps", 99}})})},
             {"LightSourceArray", Value(std::move(lights))}}));
    }

    /// Some pixels of a wall in these lights, 20 units before the eye.
    std::vector<glm::vec3> litWall(Value::Array lights, bool seenFromBehind = false) {
        newScene();
        addWall(std::move(lights), true, seenFromBehind, -20);
        draw(0);
        std::vector<glm::vec3> colors;
        for (const auto& [x, y] : {std::pair{8, 8}, {32, 32}, {42, 30}, {50, 20}, {20, 45}}) {
            const Pixel pixel = at(x, y);
            colors.emplace_back(pixel[0], pixel[1], pixel[2]);
        }
        return colors;
    }
};

TEST_F(LightTest, LightsMoveByTheirOwnEaseAndUnknownKindsAreNone) {
    Dictionary sun{{"lightSourceType", 2}, {"diffuseMaterialColor", "0.8,0.4,0"}};
    sun["AnimationInfo"] = array({dictionary({{"sartFps", 0},
                                              {"endFps", 10},
                                              {"ease", 4},
                                              {"positionEase", 1},
                                              {"startLightSourcePosition", "0,0,1"},
                                              {"endLightSourcePosition", "1,0,0"},
                                              {"startLightSourceColor", "0,0,0"}})});
    const Dictionary bright{{"diffuseMaterialColor", "1,1,1"}, {"ambientMaterialColor", "1,1,1"}};
    for (const bool isLit : {true, false}) {
        newScene();
        Value::Array lights{Value(sun)};
        for (const int unknown : {0, 4}) lights.push_back(Value(bright).with("lightSourceType", unknown));
        addWall(std::move(lights), isLit);
        draw(0);
        draw(5);
        const double facing = 0.75 / std::hypot(0.25, 0.75);  // a quarter of the way
        EXPECT_TRUE(isNear(
            at(32, 32),
            isLit ? Pixel{uint8_t(160 * facing), uint8_t(80 * facing), 0, 255} : Pixel{200, 200, 200, 255},
            2));
    }
}

TEST_F(LightTest, LightsOfAllKindsAddUpFromBothSides) {
    const Value sun = fromJson(R"({"lightSourceType": 2, "lightSourcePosition": "1,1,2",
        "ambientMaterialColor": "0.05,0,0.1", "diffuseMaterialColor": "0.3,0,0"})");
    const Value spot = fromJson(R"({"lightSourceType": 3, "lightSourcePosition": "10,0,20",
        "spotLightDirection": "0,0,-2", "spotLightCutOffAngle": 20, "spotLightExponent": 4,
        "diffuseMaterialColor": "0,0.3,0.1", "specularMaterialColor": "0.2,0,0", "specularShininess": 3})");
    const Value lamp = fromJson(R"({"lightSourceType": 1, "lightSourcePosition": "-20,10,10",
        "diffuseMaterialColor": "0.1,0.1,0.4", "specularMaterialColor": "0,0.2,0", "specularShininess": 2})");
    const auto ofSun = litWall({sun}), ofSpot = litWall({spot}), ofLamp = litWall({lamp});
    EXPECT_GT(ofSpot[2].y, 20);
    EXPECT_EQ(ofSpot[0], glm::vec3(0)) << "outside of the cone";
    EXPECT_GT(ofLamp[1].y, ofLamp[1].x + 10) << "a highlight";
    for (const bool behind : {false, true}) {
        const auto all = litWall({sun, spot, lamp}, behind), reordered = litWall({lamp, sun, spot}, behind);
        for (size_t i = 0; i < all.size(); ++i) {
            const glm::vec3 sum = ofSun[i] + ofSpot[i] + ofLamp[i];
            EXPECT_LT(glm::distance(all[i], sum), 2.5f) << i << (behind ? " behind" : "");
            EXPECT_LT(glm::distance(reordered[i], sum), 2.5f) << i << (behind ? " behind" : "");
        }
    }
}

TEST_F(LightTest, ASpotLightEndsAtItsCone) {
    addWall({dictionary({{"lightSourceType", 3},
                         {"lightSourcePosition", "0,0,40"},
                         {"spotLightDirection", "0,0,-1"},
                         {"spotLightCutOffAngle", 20},
                         {"diffuseMaterialColor", "1,1,1"}})});
    draw(0);
    const int edge = int(40 * std::tan(20 * std::acos(-1) / 180));  // 14 pixels from the middle
    EXPECT_GT(at(32 + edge - 2, 32)[0], 150);
    EXPECT_TRUE(isNear(at(32 + edge + 3, 32), kBlack));
}

TEST_F(LightTest, LightsWithoutADirectionShineStraightAhead) {
    addWall({dictionary({{"lightSourceType", 3},
                         {"lightSourcePosition", "0,0,40"},
                         {"spotLightCutOffAngle", 20},
                         {"diffuseMaterialColor", "1,1,1"}})});
    draw(0);
    EXPECT_GT(at(32, 32)[0], 190);
    EXPECT_TRUE(isNear(at(52, 32), kBlack));
    newScene();
    addWall({dictionary({{"lightSourceType", 2},
                         {"lightSourcePosition", "0,0,0"},
                         {"ambientMaterialColor", "0.25,0.25,0.25"},
                         {"diffuseMaterialColor", "0.5,0.5,0.5"}})});
    draw(0);
    EXPECT_TRUE(isNear(at(32, 32), {150, 150, 150, 255}, 2));
}

TEST_F(LightTest, AMeshOfOneColourIsLitAsATexturedOneIs) {
    const auto drawPlane = [&](bool isLit) {
        newScene();
        add(dictionary({{"type", "QVPlaneObject3D"},
                        {"MeshInfo", dictionary({{"modelWidth", side}, {"modelHeight", side}})},
                        {"ColorInfo", dictionary({{"r", 0.8}, {"g", 0.4}, {"a", 0.5}})},
                        {"FpsInfo", dictionary({{"isLightEnable", isLit}})},
                        {"LightSourceArray", array({dictionary({{"lightSourceType", 2},
                                                                {"lightSourcePosition", "0,0,1"},
                                                                {"diffuseMaterialColor", "0.5,1,1"}})})}}));
        draw(0, kBlue);
        return at(32, 32);
    };
    EXPECT_TRUE(isNear(drawPlane(false), {102, 51, 128, 255}, 2));
    EXPECT_TRUE(isNear(drawPlane(true), {51, 51, 128, 255}, 2));
}

/// A camera 32 units before the picture's plane that sees 64 units of it: one unit a pixel, y upwards.
class CameraTest : public DrawableFixture {
  protected:
    /// Where the marker at (x, y) is seen at frames 0, 5 and 10 of a move, in pixels from the upper left.
    std::vector<glm::vec2> seen(float x, float y, Dictionary move) {
        newScene();
        move.insert({{"sartFps", 0},
                     {"endFps", 10},
                     {"ease", 4},  // of no channel
                     {"isMoveCameraPosition", true},
                     {"startMoveCameraPosition", "0,0,32"},
                     {"endMoveCameraPosition", "0,0,32"}});
        scene->setCamera(QVCamera3D::cameraWithInfo(dictionary({{"type", "QVFrustumCamera"},
                                                                {"FrustumFov", 90},
                                                                {"aspect", 1},
                                                                {"LookAtAnimation", array({Value(move)})}}),
                                                    scene));
        Dictionary marker = quad("QVQuadObject3D", picture("red.png", {kRed}), 4, 4);
        marker["TransformArray"] = array({dictionary(
            {{"startTranslate", std::to_string(x) + "," + std::to_string(y) + ",0"}, {"endFps", 99}})});
        add(Value(marker));
        std::vector<glm::vec2> places;
        for (int64_t number = 0; number <= 10; ++number) {
            draw(number, kBlack);
            if (number % 5 == 0) places.push_back(centreOfRed());
        }
        return places;
    }

    glm::vec2 centreOfRed() const {
        glm::vec2 sum(0);
        int count = 0;
        for (int row = 0; row < side; ++row)
            for (int column = 0; column < side; ++column)
                if (at(column, row)[0] > 128) {
                    sum += glm::vec2(column, row) + 0.5f;
                    ++count;
                }
        return sum / float(count);
    }

    static void expectNear(const std::vector<glm::vec2>& places, const std::vector<glm::vec2>& expected) {
        ASSERT_EQ(places.size(), expected.size());
        for (size_t i = 0; i < places.size(); ++i)
            EXPECT_LT(glm::distance(places[i], expected[i]), 0.8f)
                << i << ": " << places[i].x << "," << places[i].y;
    }

    /// The turn that moves the middle of the view by half of its half: 16 of 32 pixels.
    const double turn = std::atan(0.5) * 180 / std::acos(-1);
    /// By how much half of that turn moves it.
    const float halfTurn = float(32 * std::tan(std::atan(0.5) / 2));
};

TEST_F(CameraTest, TheEyeMovesSideways) {
    expectNear(seen(8, 0, {{"endMoveCameraPosition", "16,-8,32"}}), {{40, 32}, {32, 28}, {24, 24}});
}

TEST_F(CameraTest, TheViewTurnsToATargetWithItsOwnEase) {
    // What is looked at is in the middle; the ease has covered a quarter of the way at frame 5.
    expectNear(
        seen(0, 0, {{"isMoveTargetPoint", true}, {"moveTargetPointEase", 1}, {"endTargetPoint", "16,0,0"}}),
        {{32, 32}, {28, 32}, {16, 32}});
}

TEST_F(CameraTest, LookingBackItTurnsOverItsHeadAndStaysUpsideDown) {
    expectNear(seen(8, 4,
                    {{"isMoveTargetPoint", true},
                     {"startMoveCameraPosition", "0,0,-32"},
                     {"endMoveCameraPosition", "0,0,-32"}}),
               {{40, 36}, {40, 36}, {40, 36}});
}

TEST_F(CameraTest, AnAngleReplacesTheTurnToATarget) {
    expectNear(
        seen(8, 0,
             {{"isMoveTargetPoint", true}, {"endTargetPoint", "16,0,0"}, {"isRotateFromUpVector", true}}),
        {{40, 32}, {40, 32}, {40, 32}});
}

TEST_F(CameraTest, TurnsAboutTheThreeAxes) {
    const auto about = [](const std::string& axis, double degrees) {
        return Dictionary{{"isRotateFrom" + axis, true}, {"endRotateFrom" + axis, degrees}};
    };
    // To the left, so that the marker goes right; up, so that it goes down; the up vector to the right.
    expectNear(seen(0, 0, about("UpVector", turn)), {{32, 32}, {32 + halfTurn, 32}, {48, 32}});
    expectNear(seen(0, 0, about("RightVector", turn)), {{32, 32}, {32, 32 + halfTurn}, {32, 48}});
    const float diagonal = 16 * std::sqrt(0.5f);
    expectNear(seen(16, 0, about("TargetVector", 90)), {{48, 32}, {32 + diagonal, 32 - diagonal}, {32, 16}});
}

}  // namespace multiscene::testing
