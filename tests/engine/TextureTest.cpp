#include <gmock/gmock.h>

#include <fstream>
#include <thread>

#include "3DObject/QuadObject3D/QVQuadObject3D.h"
#include "DrawableFixture.h"
#include "PvrBytes.h"
#include "core/Material/PictureSequence.h"
#include "core/Material/QVTexture2dMaterial.h"
#include "core/Material/TextureInfoKeys.h"
#include "core/component/QVObject3DSoundSourceComponent.h"
#include "group/PhotoSlot.h"
#include "platform/image/ImageDecoder.h"

namespace multiscene::testing {

TEST(CanvasSize, IsThePowerOfTwoThatHoldsThePicture) {
    for (const auto& [side, canvas] : {std::pair{1.0f, 64},
                                       {64.0f, 64},
                                       {65.0f, 128},
                                       {360.0f, 512},
                                       {640.0f, 1024},
                                       {1024.0f, 1024},
                                       {1025.0f, 2048},
                                       {0.0f, 64}})
        EXPECT_EQ(ZBTexture::minimumSizedTextureSize(side), canvas) << side;
}

class SequenceTest : public ::testing::Test {
  protected:
    static PictureSequence sequence(int start, int end, bool pingPong = false, double fps = 2,
                                    bool padded = true) {
        return PictureSequence(dictionary({{"animationFps", fps},
                                           {"animationStart", start},
                                           {"animationEnd", end},
                                           {"animationName", "pic"},
                                           {"animationExtension", "png"},
                                           {"isFristZero", padded},
                                           {"isLastLoop", pingPong}}));
    }
    static std::string at(const PictureSequence& shown, int64_t number) {
        return shown.animationWithCurrentFps(number, 100, 200).value_or("none");
    }
};

TEST_F(SequenceTest, NumbersFollowTheFrames) {
    EXPECT_EQ(at(sequence(1, 10), 100), "pic01.png");
    EXPECT_EQ(at(sequence(1, 10), 105), "pic03.png");
    EXPECT_EQ(at(sequence(1, 10), 118), "pic10.png") << "the first pass ends with the last picture";
    EXPECT_EQ(at(sequence(1, 10), 120), "pic02.png") << "and leaves the first one out when it goes round";
    EXPECT_EQ(at(sequence(1, 10, true), 120), "pic09.png");
    EXPECT_EQ(at(sequence(10, 1), 105), "pic08.png");
    EXPECT_EQ(at(sequence(10, 1, true), 120), "pic02.png");
    EXPECT_EQ(at(sequence(4, 4), 150), "pic29.png") << "one picture alone never goes round";
    EXPECT_EQ(at(sequence(1, 100), 100), "pic001.png");
    EXPECT_EQ(at(sequence(1, 1000), 100), "pic0001.png");
    EXPECT_EQ(at(sequence(1, 1000, false, 2, false), 100), "pic1.png");
    EXPECT_EQ(at(sequence(1, 10, false, 0), 150), "pic01.png") << "no rate: the first picture is held";
    EXPECT_EQ(at(sequence(1, 10), 99), "none");
    EXPECT_EQ(at(sequence(1, 10), 201), "none");
}

class TextureTest : public DrawableFixture {
  protected:
    static Value values(Dictionary map) { return Value(std::move(map)); }
    std::string pathOf(const std::string& texture) {
        Dictionary info = quad("QVQuadObject3D", texture);
        return add<QVQuadObject3D>(info)->computeTexturePath();
    }
};

TEST_F(TextureTest, PicturesAreStretchedOverTheirCanvas) {
    // Red, the last fifth of its columns green and of its rows blue, on a canvas of 128 x 64.
    std::vector<Pixel> colors(100 * 20, kRed);
    for (size_t i = 0; i < colors.size(); ++i)
        if (i >= 100 * 16)
            colors[i] = kBlue;
        else if (i % 100 >= 80)
            colors[i] = kGreen;
    const std::string file = picture("wide.png", colors, 100);
    // As it is drawn by a quad that tells how large it is shown, and by a mesh, which does not.
    for (const bool isMesh : {false, true}) {
        Dictionary info = quad(isMesh ? "QVPlaneObject3D" : "QVQuadObject3D", file);
        info["MeshInfo"] = dictionary({{"modelWidth", side}, {"modelHeight", side}});
        show(info);
        for (const auto& [x, y, color] : {std::tuple{1, 1, kRed},
                                          {47, 47, kRed},
                                          {55, 1, kGreen},
                                          {62, 47, kGreen},
                                          {1, 55, kBlue},
                                          {62, 62, kBlue}})
            EXPECT_TRUE(isNear(at(x, y), color, 2)) << isMesh << ": " << x << "," << y;
    }
    ZBTexture loaded;
    loaded.loadloadTexture(file, painters.gate);
    EXPECT_EQ(loaded.textureContentSize().width, 100);
    EXPECT_EQ(loaded.textureContentSize().height, 20);
    ZBTexture missing;
    missing.loadloadTexture(path("none.png"), painters.gate);
    platform::writeFileAtomically(path("text.png"), "no picture");
    missing.loadloadTexture(path("text.png"), painters.gate);
    EXPECT_TRUE(missing.texture()->isEmpty());
    EXPECT_EQ(missing.textureContentSize().width, 0);
}

TEST_F(TextureTest, ThePathIsTheUsersOrTheTemplates) {
    const std::string own = picture("own.png", {kRed}), users = picture("users.png", {kBlue});
    EXPECT_EQ(pathOf(own), own);
    EXPECT_EQ(pathOf("$(currentScenePlistROOT)/own.png"), folder.string() + "/own.png");
    EXPECT_EQ(pathOf("photo"), "") << "a bare name is never looked up in the working directory";
    setUserMediaMap(values({{"photo", Value(users)}}));
    EXPECT_EQ(pathOf("photo"), users);
    scene->setSceneIdentifier("one");
    EXPECT_EQ(pathOf("photo"), "") << "with an identifier the key alone is not looked up";
    setUserMediaMap(values({{"photoone", Value(users)}}));
    EXPECT_EQ(pathOf("photo"), users);
    EXPECT_EQ(pathOf("/etc/hostname"), "") << "outside the fence";
}

TEST_F(TextureTest, PhotoSlotsBeyondThePhotosShowThemAgain) {
    for (const char* name : {"fy1.jpg", "fy2.jpg", "fy3.jpg", "fy100.jpg"}) std::ofstream(path(name)) << "x";
    EXPECT_EQ(suppliedPhotoForSlot(path("fy7.jpg")), path("fy2.jpg"));
    EXPECT_EQ(suppliedPhotoForSlot(path("fy9.jpg")), path("fy1.jpg"));
    EXPECT_EQ(suppliedPhotoForSlot(path("photo7.jpg")), path("photo7.jpg"));
    EXPECT_EQ(suppliedPhotoForSlot(path("none/fy7.jpg")), path("none/fy7.jpg"));
    // Only for slots that come from the user, and only where the named file is missing.
    EXPECT_EQ(pathOf(path("fy7.jpg")), "");
    setUserMediaMap(values({{"slot", Value(path("fy7.jpg"))}, {"first", Value(path("fy3.jpg"))}}));
    EXPECT_EQ(pathOf("slot"), path("fy2.jpg"));
    EXPECT_EQ(pathOf("first"), path("fy3.jpg"));
}

TEST_F(TextureTest, LargeTextsAreDrawnSmallerButKeepTheirCoordinates) {
    const auto textOf = [](double scale) {
        return dictionary(
            {{"textureType", "text2d"},
             {"textString", "wide"},
             {"fontSize", 40 * scale},
             {"textColor", "1,1,1,1"},
             {"textAlignment", 1},
             {"textFixedResolution", std::to_string(2000 * scale) + "," + std::to_string(500 * scale)}});
    };
    QVTexture2dMaterial text(textOf(1));
    text.setObject3D(add(dictionary({{"type", "QVQuadObject3D"}})).get());
    driver.played.textCopy().setFolder(folder);
    text.loadMaterial();
    EXPECT_EQ(text.textureSize().width, 2000);
    while (!std::filesystem::exists(path("text.jpg"))) std::this_thread::yield();
    const platform::FileHandle kept = driver.played.gate().open(path("text.jpg")).file;
    EXPECT_EQ(platform::readImageSize(kept).width, 1024) << "as large as it is drawn";
    const float right = 2000 / 2048.0f, bottom = 500 / 512.0f;
    EXPECT_THAT(text.textureCoordinates(), ::testing::ElementsAre(0, bottom, right, bottom, right, 0, 0, 0));
    // Enlarged, so that the edges of its letters tell the size of its pixels: those of the same text at half
    // the size.
    const auto enlarged = [&](double scale) {
        Dictionary info = quad("QVQuadObject3D", "", 4000, 1000);
        info["TextureInfo"] = textOf(scale);
        show(info, 0, kBlack);
        return picture_.pixels;
    };
    const std::vector<Pixel> large = enlarged(1), half = enlarged(0.5);
    int bright = 0, different = 0;
    for (size_t i = 0; i < large.size(); ++i) {
        bright += half[i][0] > 128;
        different += !isNear(large[i], half[i], 8);
    }
    EXPECT_GT(bright, 500);
    EXPECT_LT(bright, 3500);
    EXPECT_LT(different, 40);
}

TEST_F(TextureTest, FiltersShapeThePhotoOnly) {
    const std::string photo = picture("photo.png", std::vector<Pixel>(64 * 64, kRed), 64);
    picture("veil.png", {{0, 0, 255, 255}, {0, 0, 0, 0}}, 1);  // over the upper half
    const auto drawn = [&](Dictionary filter, const std::string& file) {
        Dictionary info = quad("QVQuadObject3D", file);
        filter.insert({{"textureType", "filterImage"}, {"texture", Value(file)}});
        info["TextureInfo"] = Value(filter);
        show(info, 0, kWhite);
    };
    drawn({{"filterType", "imageSynthesis"}, {"maskPhotoName", "$(currentScenePlistROOT)/veil.png"}}, photo);
    EXPECT_TRUE(isNear(at(32, 4), kBlue, 2));
    EXPECT_TRUE(isNear(at(32, 60), kRed, 2));
    drawn({{"filterType", "imageSynthesis"}, {"maskPhotoName", "$(currentScenePlistROOT)/none.png"}}, photo);
    EXPECT_TRUE(isNear(at(32, 4), kRed, 2));
    drawn({{"filterType", "roundRect"}, {"circularR", 320}}, photo);
    EXPECT_TRUE(isNear(at(1, 1), kWhite, 2));
    EXPECT_TRUE(isNear(at(32, 32), kRed, 2));
    const auto stroked = [&](double radius) {
        drawn({{"filterType", "circularAndStroke"},
               {"circularR", radius},
               {"strokeW", 128},
               {"strokeColor", "0,0,1,1"}},
              photo);
    };
    stroked(320);
    EXPECT_TRUE(isNear(at(1, 1), kWhite, 2));
    EXPECT_TRUE(isNear(at(1, 32), kBlue, 2)) << "the inner half of the line";
    EXPECT_TRUE(isNear(at(5, 32), kRed, 2));
    EXPECT_TRUE(isNear(at(7, 7), kBlue, 2)) << "around the corner";
    stroked(0);
    EXPECT_TRUE(isNear(at(1, 1), kRed, 2)) << "without a radius neither corners nor a line";
    EXPECT_TRUE(isNear(at(1, 32), kRed, 2));
    drawn({{"filterType", "unknown"}}, photo);
    EXPECT_TRUE(isNear(at(32, 32), kWhite));
}

TEST_F(TextureTest, NoCanvasIsLargerThanTheTableSays) {
    platform::FileGate gate;
    gate.allowFolder(path(""));
    for (const int width : {4095, 4096, 4097}) {
        const std::vector<Pixel> row(static_cast<size_t>(width), kRed);
        const auto wide = ZBTexture::picture(picture("wide.png", row, width), gate, {});
        EXPECT_EQ(wide.bitmap.width, 4096) << width;
        EXPECT_EQ(wide.source.width, width);
    }
}

TEST_F(TextureTest, ShrunkPicturesAreAveraged) {
    // One column in eight is black: a picture of 1024 columns shown in 64 is an even grey.
    std::vector<Pixel> stripes(1024 * 64, kWhite);
    for (size_t i = 0; i < stripes.size(); i += 8) stripes[i] = {0, 0, 0, 255};
    const std::string file = picture("stripes.png", stripes, 1024);
    const auto spread = [&](Dictionary changes) {
        Dictionary info = quad("QVQuadObject3D", file);
        for (const auto& [key, value] : changes) info[key] = value;
        show(info, 0, kRed);
        int least = 255, most = 0;
        for (int x = 2; x < 62; ++x) {
            least = std::min<int>(least, at(x, 32)[0]);
            most = std::max<int>(most, at(x, 32)[0]);
        }
        EXPECT_GT(least, 150);
        return most - least;
    };
    EXPECT_LT(spread({}), 12);
    EXPECT_LT(spread({{"TextureInfo", dictionary({{"textureType", "filterImage"},
                                                  {"texture", file},
                                                  {"filterType", "roundRect"},
                                                  {"circularR", 1}})}}),
              12);
}

TEST_F(TextureTest, FilteredPhotosOfAnySizeLookTheSame) {
    const auto shape = [&](int width, int height) {
        const auto count = static_cast<size_t>(width) * static_cast<size_t>(height);
        Dictionary info = quad("QVQuadObject3D", "");
        info["TextureInfo"] =
            dictionary({{"textureType", "filterImage"},
                        {"texture", picture("photo.png", std::vector<Pixel>(count, kRed), width)},
                        {"filterType", "circularAndStroke"},
                        {"circularR", 200},
                        {"strokeW", 96},
                        {"strokeColor", "0,0,1,1"}});
        show(info, 0, kWhite);
        std::string seen;
        for (int y = 0; y < 64; y += 2)
            for (int x = 0; x < 64; x += 2)
                seen += isNear(at(x, y), kWhite, 60) ? '.' : isNear(at(x, y), kBlue, 60) ? 'o' : 'x';
        return seen;
    };
    const std::string usual = shape(1000, 750);
    EXPECT_EQ(usual[0], '.');
    EXPECT_GT(std::count(usual.begin(), usual.begin() + 32, 'o'), 20) << usual;
    for (const int width : {32, 160, 3000}) {
        const std::string other = shape(width, width * 3 / 4);
        int different = 0;
        for (size_t i = 0; i < usual.size(); ++i) different += other[i] != usual[i];
        EXPECT_LT(different, 8) << width << " pixels";  // of 1024: the blend at an edge
    }
}

TEST_F(TextureTest, SequencesHoldTheLastPictureOverAGap) {
    picture("pic1.png", {kRed});
    picture("pic3.png", {kBlue});
    Dictionary info = quad("QVQuadObject3D", "");
    info["TextureInfo"] = dictionary({{"textureType", "textureSerial"},
                                      {"animationFps", 1},
                                      {"animationStart", 1},
                                      {"animationEnd", 3},
                                      {"animationName", "$(currentScenePlistROOT)/pic"},
                                      {"animationExtension", "png"}});
    add(info);
    for (const auto& [number, color] : {std::pair{0, kRed}, {1, kRed}, {2, kBlue}}) {
        draw(number);
        EXPECT_TRUE(isNear(at(30, 30), color)) << number;
    }
}

TEST_F(TextureTest, PvrSequencesShowNothingInAGap) {
    for (const auto& [number, color] : {std::pair{1, kRed}, {3, kBlue}}) {
        const Bytes file = pvr({.width = 1, .height = 1}, {color.begin(), color.end()});
        platform::writeFileAtomically(path("pic" + std::to_string(number) + ".pvr"),
                                      {reinterpret_cast<const char*>(file.data()), file.size()});
    }
    Dictionary info = quad("QVPvrTextureSerialQuadObject3D", "");
    info.erase("TextureInfo");
    info["PvrTextureSerialInfo"] = dictionary({{"animationFps", 1},
                                               {"animationStart", 1},
                                               {"animationEnd", 3},
                                               {"animationName", "$(currentScenePlistROOT)/pic"},
                                               {"animationExtension", "pvr"}});
    info["FpsInfo"] = frames(1, 3);
    add(info);
    const std::vector<Pixel> expected{kBlack, kRed, kBlack, kBlue, kBlack};
    for (int number = 0; number < 5; ++number) {
        draw(number, kBlack);
        EXPECT_TRUE(isNear(at(30, 30), expected[size_t(number)])) << number;
        scene->renderComplete();
    }
}

TEST_F(TextureTest, TheTextureLastsFromTheFirstFrameToTheLast) {
    const int before = liveGLObjects(GLObjectKind::Texture);
    Dictionary info = quad("QVQuadObject3D", picture("red.png", {kRed}));
    info["FpsInfo"] = frames(1, 3);
    const auto node = add<QVQuadObject3D>(info);
    const std::vector<int> expected{0, 1, 1, 0, 0};
    for (int64_t number = 0; number < 5; ++number) {
        draw(number);
        scene->renderComplete();
        EXPECT_EQ(liveGLObjects(GLObjectKind::Texture) - before, expected[size_t(number)]) << number;
    }
    EXPECT_EQ(scene->numChildren(), 1u) << "the node went with its last frame, the camera stays";
}

// Sounds

TEST_F(TextureTest, SoundsAreRegisteredOnTheirFirstFrameOnce) {
    std::ofstream(path("pop.wav")) << "sound";
    setUserMediaMap(values({{"loudnessa", "0.25"}}));
    scene->setSceneIdentifier("a");
    const auto sound = [&](const std::string& file) {
        return dictionary({{"type", "QVObject3DSoundSourceComponent"},
                           {"startFps", 10},
                           {"endFps", 40},
                           {"audioFilePath", Value(file)},
                           {"audioVolume", "loudness"},
                           {"audioKey", "pop"},
                           {"isLoop", true}});
    };
    add(dictionary({{"type", "QVObject3DTransformBase"},
                    {"ComponentsInfo", array({sound(path("pop.wav")), sound(path("none.wav"))})}}));
    for (const int64_t number : {9, 10, 10, 11}) draw(number);
    ASSERT_EQ(driver.sounds.size(), 1u);
    EXPECT_EQ(driver.sounds[0], dictionary({{"type", "audio"},
                                            {"audioPath", Value(path("pop.wav"))},
                                            {"audioName", "popa"},
                                            {"volume", 0.25},
                                            {"isLoop", true},
                                            {"fpsStart", 10},
                                            {"fpsEnd", 40}}));
    EXPECT_EQ(reported().size(), 1u);
}

}  // namespace multiscene::testing
