#include "app/preview/HeldPlayer.h"

#include <gtest/gtest.h>

#include "tests/app/TemporaryHome.h"
#include "tests/program/SmallTemplate.h"

namespace multiscene {
namespace {

class HeldPlayerTest : public ::testing::Test {
  protected:
    HeldPlayerTest() {
        test::SmallTemplate small;
        // Each frame looks different.
        small.nodes.clear();
        for (int frame = 0; frame < test::SmallTemplate::frames; ++frame) {
            const std::string name = "slide" + std::to_string(frame);
            auto node = test::quad(name, "$(currentScenePlistROOT)/" + name + ".png");
            node["FpsInfo"] = platform::Value::Dictionary{{"startFps", frame}, {"endFps", frame}};
            small.nodes.push_back(node);
        }
        small.nodes.push_back(test::SmallTemplate().nodes.back());  // the text
        small.more = [](const std::filesystem::path& path) {
            for (uint32_t frame = 0; frame < test::SmallTemplate::frames; ++frame)
                test::writePicture(path / ("slide" + std::to_string(frame) + ".png"), 0x200000 * (frame + 1));
        };
        request_.source = small.write(home_.outside()).string();
        request_.inputs.texts = {{"title", "one"}};
    }

    std::vector<uint8_t> frame(HeldPlayer& player, int64_t number) {
        std::vector<uint8_t> picture(64 * 96 * 4);
        EXPECT_EQ(
            player.show(number, {.pixels = picture.data(), .stride = 64 * 4, .width = 64, .height = 96}),
            HeldPlayer::Outcome::Shown)
            << number;
        return picture;
    }

    test::TemporaryHome home_;
    RenderRequest request_;
    JobObserver observer_;
    std::stop_source stop_;
};

TEST_F(HeldPlayerTest, ShowsNoFrameBeyondTheEndAndGoesOnAfterWrongValues) {
    HeldPlayer held(request_, observer_, stop_.get_token());
    std::vector<uint8_t> none(64 * 96 * 4);
    const platform::Canvas canvas{.pixels = none.data(), .stride = 64 * 4, .width = 64, .height = 96};
    EXPECT_EQ(held.show(6, canvas), HeldPlayer::Outcome::BeyondEnd);
    EXPECT_EQ(held.show(0, canvas, [] { return true; }), HeldPlayer::Outcome::GivenUp);
    EXPECT_EQ(held.frames(), 6);
    const auto before = frame(held, 2);
    JobInputs wrong;
    wrong.texts = {{"no such key", "x"}};
    EXPECT_THROW(held.setInputs(wrong, stop_.get_token()), platform::Error);
    EXPECT_EQ(frame(held, 2), before);
}

TEST_F(HeldPlayerTest, TakesOtherValuesAtAnyMoment) {
    std::vector<std::vector<std::vector<uint8_t>>> wanted;
    for (const char* title : {"one", "two"}) {
        request_.inputs.texts = {{"title", title}};
        HeldPlayer straight(request_, observer_, stop_.get_token());
        wanted.emplace_back();
        for (int64_t number = 0; number < test::SmallTemplate::frames; ++number)
            wanted.back().push_back(frame(straight, number));
    }
    HeldPlayer held(request_, observer_, stop_.get_token());
    held.holdFrames();
    std::vector<uint8_t> givenUp(64 * 96 * 4);
    const platform::Canvas canvas{.pixels = givenUp.data(), .stride = 64 * 4, .width = 64, .height = 96};
    for (int turn = 0; turn < 90; ++turn) {
        const auto number = static_cast<int64_t>(turn / 3 % 6);
        JobInputs inputs;
        inputs.texts = {{"title", turn % 2 ? "one" : "two"}};
        held.setInputs(inputs, stop_.get_token());
        int patience = turn / 6 % 4;
        if (turn % 5 > 2) held.show((number + turn) % 6, canvas, [&] { return --patience < 0; });
        EXPECT_EQ(frame(held, number), wanted[turn % 2 ? 0 : 1][static_cast<size_t>(number)]) << turn;
    }
}

}  // namespace
}  // namespace multiscene
