#include "playback/PicturesAhead.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>

namespace multiscene {
namespace {

PictureOnCanvas picture(int side) { return {platform::Bitmap(side, side), {side, side}}; }

TEST(PicturesAheadTest, WhatIsTakenIsTheSameHoweverFarTheThreadIs) {
    platform::FileGate gate;
    PicturesAhead ahead(gate);
    const auto scene = std::make_shared<int>(0);
    std::atomic<int> made{0};
    const auto making = [&](int side) {
        return [&made, side](platform::FileGate&) {
            ++made;
            return picture(side);
        };
    };
    // The last is taken before the thread can have begun with it, and each once: the third time nobody
    // expected it.
    for (int round = 0; round < 50; ++round) {
        made = 0;
        for (const int side : {400, 401, 401, 402}) ahead.expect(scene, std::to_string(side), making(side));
        for (const int side : {402, 400, 401, 401, 401})
            EXPECT_EQ(ahead.take(std::to_string(side), making(side)).source.width, side);
        EXPECT_EQ(made, 5);
    }
}

TEST(PicturesAheadTest, WhatNobodyTakesIsNotMadeWithoutEnd) {
    std::atomic<int> made{0};
    const auto large = [&made](platform::FileGate&) {
        ++made;
        return picture(1024);
    };
    platform::FileGate gate;
    PicturesAhead ahead(gate);
    auto scene = std::make_shared<int>(0);
    for (int number = 0; number < 40; ++number) ahead.expect(scene, std::to_string(number), large);
    // The thread has met its limit when something it could have made long ago is still not begun.
    for (int last = -1; last != made;) {
        last = made;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_GT(made, 0);
    EXPECT_LT(made, 10);
    // A scene that is gone gives its room back.
    scene.reset();
    const int before = made;
    const auto next = std::make_shared<int>(0);
    ahead.expect(next, "next", large);
    while (made == before) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(ahead.take("next", large).source.width, 1024);
    EXPECT_EQ(made, before + 1);
}

TEST(PicturesAheadTest, WhatSomebodyWaitsForOutlivesTheSceneThatExpectedIt) {
    platform::FileGate gate;
    PicturesAhead ahead(gate);
    auto gone = std::make_shared<int>(0);
    std::atomic<bool> isBegun{false}, isAwaited{false};
    ahead.expect(gone, "photo", [&](platform::FileGate&) {
        isBegun = true;
        while (!isAwaited) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        // By now the other thread waits for it, as far as that can be told from here.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return picture(64);
    });
    while (!isBegun) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    gone.reset();
    isAwaited = true;
    const auto itself = [](platform::FileGate&) { return picture(1); };
    EXPECT_EQ(ahead.take("photo", itself).source.width, 64);
}

TEST(PicturesAheadTest, RefusedFilesAndFailuresAreTheTakersOwn) {
    platform::FileGate gate;
    PicturesAhead ahead(gate);
    const auto scene = std::make_shared<int>(0);
    std::atomic<int> tried{0};
    const auto refused = [&tried](platform::FileGate& through) {
        through.check("/etc/passwd");
        ++tried;
        return picture(64);
    };
    const auto failing = [&tried](platform::FileGate&) -> PictureOnCanvas {
        ++tried;
        throw std::runtime_error("no memory");
    };
    ahead.expect(scene, "refused", refused);
    ahead.expect(scene, "failing", failing);
    while (tried < 2) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(gate.refusals().empty());
    EXPECT_EQ(ahead.take("refused", refused).source.width, 64);
    EXPECT_EQ(gate.refusals().size(), 1u);
    EXPECT_THROW(ahead.take("failing", failing), std::runtime_error);
}

}  // namespace
}  // namespace multiscene
