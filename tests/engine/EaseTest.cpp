#include <gtest/gtest.h>

#include <cmath>

#include "tween/Ease.h"
#include "tween/QVTweenItem.h"

namespace multiscene {
namespace {

TEST(Ease, EveryEaseStartsAtZeroAndEndsAtOne) {
    for (const Ease& ease : easeTable()) {
        // The elastic and exponential families only come within a thousandth of their ends.
        EXPECT_NEAR(ease.function(0), 0, 1e-3) << ease.name;
        EXPECT_NEAR(ease.function(1), 1, 1e-3) << ease.name;
    }
}

TEST(Ease, InOutFamiliesAreSymmetricAboutTheMiddle) {
    for (const Ease& ease : easeTable()) {
        if (ease.name.find("InOut") == std::string_view::npos) continue;
        for (float p = 0; p <= 1; p += 0.0625f)
            EXPECT_NEAR(ease.function(p) + ease.function(1 - p), 1, 1e-5) << ease.name << " at " << p;
    }
}

TEST(Ease, OutIsInTurnedRound) {
    for (const auto& [in, out] :
         {std::pair{1, 2}, {4, 5}, {7, 8}, {13, 14}, {16, 17}, {19, 20}, {25, 26}, {28, 29}})
        for (float p = 0; p <= 1; p += 0.0625f)
            EXPECT_NEAR(easeFunction(in)(p), 1 - easeFunction(out)(1 - p), 1e-3) << in << " at " << p;
}

TEST(Ease, ValuesAndIds) {
    EXPECT_FLOAT_EQ(easeFunction(6)(0.25f), 0.0625f);
    EXPECT_FLOAT_EQ(easeFunction(12)(0.25f), 0.015625f);
    EXPECT_FLOAT_EQ(easeFunction(21)(0.25f), static_cast<float>(0.5 * std::pow(2, -5)));
    EXPECT_NEAR(easeFunction(24)(0.5f), 0.5f, 1e-6);
    const std::pair<int, double> halfway[] = {{8, 15.0 / 16},           {11, 31.0 / 32},
                                              {13, 1 - std::sqrt(0.5)}, {16, 1 - std::sqrt(0.75)},
                                              {19, 1.0 / 32},           {22, -std::sqrt(0.5) / 32},
                                              {25, 1.0 / 8 - 1.0 / 2},  {28, 1 - 0.71875}};
    for (const auto& [id, value] : halfway) EXPECT_NEAR(easeFunction(id)(0.5f), value, 1e-6) << id;
    EXPECT_NEAR(easeFunction(29)(0.5f), 0.71875f, 1e-6);
    for (float p = 0; p <= 1; p += 0.125f) {
        EXPECT_EQ(easeFunction(9)(p), easeFunction(3)(p));
        EXPECT_EQ(easeFunction(10)(p), p * p * p);
        EXPECT_EQ(easeFunction(static_cast<int32_t>(easeTable().size()))(p), p);
        EXPECT_EQ(easeFunction(29999)(p), p);
    }
    EXPECT_FALSE(isBezierEase(29999));
    EXPECT_TRUE(isBezierEase(30000));
    EXPECT_TRUE(isBezierEase(-1));
    EXPECT_EQ(QVTweenItem::easeValueWithEase(30000, 0.3f, nullptr), 0.3f);
}

}  // namespace
}  // namespace multiscene
