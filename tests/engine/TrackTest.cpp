#include "3DObject/QuadObject3D/QVQuadTrackObject3D.h"
#include "DrawableFixture.h"
#include "format/TrackFile.h"

namespace multiscene::testing {

class TrackTest : public DrawableFixture {
  protected:
    /// A track whose frame i has all corners at (i / 10, 1 - i / 10), as text.
    static std::vector<uint8_t> track(int count) {
        std::vector<FrameCorners> list;
        for (int i = 0; i < count; ++i) {
            const double x = i / 10.0, y = 1 - x;
            list.push_back({x, y, x, y, x, y, x, y});
        }
        return xmlOf(list);
    }
    /// x, y of bottom left, bottom right, top right, top left.
    using FrameCorners = std::array<double, 8>;
    static std::vector<uint8_t> xmlOf(const std::vector<FrameCorners>& list) {
        static constexpr const char* names[] = {"bottomleftx", "bottomlefty", "bottomrightx", "bottomrighty",
                                                "toprightx",   "toprighty",   "topleftx",     "toplefty"};
        std::string xml = "<CornerPinInfoDoc><Object>";
        for (const FrameCorners& corners : list) {
            xml += "<Frame>";
            for (size_t i = 0; i < corners.size(); ++i)
                xml += std::string("<") + names[i] + ">" + std::to_string(corners[i]) + "</" + names[i] + ">";
            xml += "</Frame>";
        }
        xml += "</Object></CornerPinInfoDoc>";
        return {xml.begin(), xml.end()};
    }
    void write(const std::string& name, const std::vector<uint8_t>& bytes) const {
        platform::writeFileAtomically(path(name),
                                      {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }
    std::shared_ptr<QVQuadTrackObject3D> tracked(const std::string& file) {
        Dictionary info = quad("QVQuadTrackObject3D", picture("red.png", {kRed}), 40, 20);
        info["TrackInfo"] = dictionary({{"trackFliePath", Value(file)}});
        info["FpsInfo"] = frames(2, 100);
        return add<QVQuadTrackObject3D>(info);
    }
};

TEST_F(TrackTest, CornersFollowTheFramesDrawnAndTheLastIsHeld) {
    write("track", TrackFile::encryptedAES256DataUsingDefaultKey(track(5), "track"));
    const auto node = tracked("$(currentScenePlistROOT)/track");
    // Not the frame's number counts but how many frames the quad was drawn, a pause included.
    float expected = 0;
    for (const int64_t number : {0, 2, 3, 10, 11, 12, 13, 14}) {
        draw(number);
        if (number < 2) continue;
        EXPECT_NEAR(node->squareVertices()[0], expected - 0.5, 1e-5) << number;
        EXPECT_NEAR(node->squareVertices()[10], 0.5 - expected, 1e-5) << number;
        EXPECT_EQ(node->squareVertices()[11], 0);
        expected = std::min(expected + 0.1f, 0.4f);
    }
}

TEST_F(TrackTest, ThePictureIsPinnedToItsCorners) {
    mayDiffer = 100;
    // The lower left quarter, a trapezium standing on the middle line, then a single wide strip at the top.
    write("track",
          TrackFile::encryptedAES256DataUsingDefaultKey(xmlOf({{0, 0, 0.5, 0, 0.5, 0.5, 0, 0.5},
                                                               {0.25, 0.5, 0.75, 0.5, 0.625, 1, 0.375, 1},
                                                               {0, 0.75, 1, 0.75, 1, 1, 0, 1}}),
                                                        "track"));
    Dictionary info = quad("QVQuadTrackObject3D", picture("red.png", {kRed}), 5, 5);
    info["TrackInfo"] = dictionary({{"trackFliePath", "$(currentScenePlistROOT)/track"}});
    info["TransformArray"] = array({dictionary({{"sartFps", 0}, {"endFps", 1}, {"startScale", "64,64,1"}})});
    add(info);
    const auto isRed = [&](int x, int y) { return at(x, y) == kRed; };
    draw(0, kBlack);
    EXPECT_TRUE(isRed(2, 61) && isRed(29, 34));
    EXPECT_FALSE(isRed(34, 61) || isRed(2, 29));
    draw(1, kBlack);
    EXPECT_TRUE(isRed(18, 30) && isRed(45, 30) && isRed(26, 2) && isRed(37, 2));
    EXPECT_FALSE(isRed(18, 2) || isRed(45, 2) || isRed(32, 34));
    for (const int64_t number : {2, 3, 40}) {
        draw(number, kBlack);
        EXPECT_TRUE(isRed(1, 1) && isRed(62, 14)) << number;
        EXPECT_FALSE(isRed(32, 18)) << number;
    }
}

TEST_F(TrackTest, UnreadableTracksKeepTheBoxAndAreNotTriedAgain) {
    write("plain", track(3));
    auto damaged = TrackFile::encryptedAES256DataUsingDefaultKey(track(3), "track");
    damaged.pop_back();
    write("damaged", damaged);
    size_t missing = 0;
    for (const char* name : {"plain", "damaged", "missing"}) {
        newScene();
        std::filesystem::remove(path("missing"));
        const auto node = tracked(path(name));
        draw(2);
        write("missing", TrackFile::encryptedAES256DataUsingDefaultKey(track(3), "track"));
        draw(3);
        EXPECT_EQ(node->squareVertices()[0], -20) << name;
        EXPECT_EQ(reported().size(), ++missing) << name;
    }
}

TEST_F(TrackTest, EncryptingIsReproducibleAndRefusesWhatIsNoTrack) {
    const auto stored = TrackFile::encryptedAES256DataUsingDefaultKey(track(2), "track");
    EXPECT_EQ(stored, TrackFile::encryptedAES256DataUsingDefaultKey(track(2), "track"));
    EXPECT_EQ(TrackFile::decryptedAES256DataUsingDefaultKey(stored), track(2));
    EXPECT_EQ(TrackFile::frames(track(1)).size(), 1u) << "a track of one frame is a list too";
    const std::string noTrack = "<CornerPinInfoDoc><Object/></CornerPinInfoDoc>";
    EXPECT_THROW(TrackFile::encryptedAES256DataUsingDefaultKey({noTrack.begin(), noTrack.end()}, "x.xml"),
                 platform::Error);
}

}  // namespace multiscene::testing
