#include <gtest/gtest.h>

#include <cmath>

#include "dataMode/QVMultiScene2DTextDataModel.h"
#include "dataMode/TextSettings.h"
#include "playback/Playback.h"

namespace multiscene {
namespace {

using platform::Value;

class TextModelTest : public testing::Test {
  protected:
    /// A model with these keys over a plain caption in a texture of 640 x 200.
    QVMultiScene2DTextDataModel model(const Value::Dictionary& keys, const std::string& identifier = {}) {
        Value::Dictionary info{{"textString", "caption"},
                               {"fontName", "DejaVu Sans"},
                               {"fontSize", 40},
                               {"textFixedResolution", "640,200"}};
        for (const auto& [key, value] : keys) info[key] = value;
        auto result = QVMultiScene2DTextDataModel::multiScene2DTextDataModelWithDic(info);
        result.setScene(identifier, "", playback_);
        return result;
    }
    /// The columns of the bitmap that hold something: first and last.
    static std::pair<int, int> inkColumns(const QVMultiScene2DTextDataModel& text) {
        const auto bitmap = draw(text);
        int first = bitmap.width, last = -1;
        for (int x = 0; x < bitmap.width; ++x)
            for (int y = 0; y < bitmap.height; ++y)
                if (bitmap.pixel(x, y)[3] > 20) first = std::min(first, x), last = x;
        return {first, last};
    }
    static platform::Bitmap draw(const QVMultiScene2DTextDataModel& text) {
        return text.drawText(int(text.textureSize().width), int(text.textureSize().height), 1);
    }

    Playback playback_;
};

TEST_F(TextModelTest, AUsersLongTextIsSmallerAndOddLettersAreNamed) {
    playback_.settings().setUserMediaMapDic(Value::Dictionary{{kUserTextScale + std::string("half"), 0.5},
                                                              {kUserTextScale + std::string("twice"), 2},
                                                              {kUserTextScale + std::string("none"), 0}});
    EXPECT_EQ(findTextScale("half", "", playback_.settings()), 0.5F);
    for (const char* key : {"twice", "none", "missing"})
        EXPECT_EQ(findTextScale(key, "", playback_.settings()), 1) << key;
    EXPECT_EQ(letterNames({U'a', 0x1F382}), "U+0061 U+1F382");
    EXPECT_EQ(letterNames(std::vector<char32_t>(10, U'b')).substr(7 * 7), "U+0062 and 2 more");
    EXPECT_EQ(model({{"lineSpacing", std::nan("")}}).textureSize().width, 640);
}

TEST_F(TextModelTest, AFixedTextureShrinksTheTextUntilItFits) {
    const auto fits = model({});
    EXPECT_EQ(fits.textureSize().width, 640);
    EXPECT_EQ(fits.textureSize().height, 200);
    EXPECT_EQ(fits.textDrawScale(), 1);
    const auto longText = model(
        {{"textString", "Congratulations to the wonderful couple on this special day"}, {"fontSize", 90}});
    EXPECT_EQ(longText.textureSize().width, 640);
    EXPECT_LT(longText.textDrawScale(), 1);
    EXPECT_GT(longText.textDrawScale(), 0.5);
    EXPECT_EQ(longText.description().layout.wrap, platform::TextWrap::Words);
    const auto [first, last] = inkColumns(longText);
    EXPECT_GT(first, 0);
    EXPECT_LT(last, 639);
    const auto longWord = model({{"textString", std::string(60, 'w')}, {"fontSize", 90}});
    EXPECT_LE(longWord.textDrawScale(), 0.5);
    EXPECT_EQ(longWord.description().layout.wrap, platform::TextWrap::WordsThenCharacters);
    const auto endless = model({{"textString", std::string(4000, 'w')}, {"fontSize", 400}});
    EXPECT_NEAR(endless.textDrawScale(), 0.1, 1e-9);
    EXPECT_GT(inkColumns(endless).second, 600);
}

TEST_F(TextModelTest, AWritersOwnLinesStayUnlessTheyWouldBeMuchSmaller) {
    const auto lines = [](const QVMultiScene2DTextDataModel& text) {
        return measureText(text.description().layout, text.textDrawRect().width).lineCount;
    };
    const auto slightlyTooLong =
        model({{"textString", "Happy birthday\nAlexandra Montgomery"}, {"fontSize", 60}});
    EXPECT_EQ(lines(slightlyTooLong), 2);
    EXPECT_GT(slightlyTooLong.textDrawScale(), 0.85);
    EXPECT_LT(slightlyTooLong.textDrawScale(), 1);
    const auto [first, last] = inkColumns(slightlyTooLong);
    EXPECT_GE(first, 0);
    EXPECT_LT(last, 639);
    EXPECT_GT(last, 600) << "no smaller than need be";
    const auto muchTooLong = model(
        {{"textString", "Dear\nall of you who came from near and far to be with us"}, {"fontSize", 50}});
    EXPECT_EQ(lines(muchTooLong), 3);
    EXPECT_EQ(lines(model({{"textString", "Happy birthday Alexandra Montgomery"}, {"fontSize", 60}})), 3)
        << "lines that nobody wrote break instead";
}

TEST_F(TextModelTest, AGrowingTextureIsAsLargeAsItsText) {
    const auto small = model({{"textureSizeMode", 1}, {"textFixedResolution", ""}});
    EXPECT_EQ(small.textDrawScale(), 1);
    const auto measured = platform::measureText(small.description().layout, 0).size;
    EXPECT_NEAR(small.textureSize().width, measured.width, 2);
    EXPECT_NEAR(small.textureSize().height, measured.height, 2);
    const auto stroked = model({{"textureSizeMode", 1}, {"textDrawingMode", 2}, {"strokeWidth", 10}});
    EXPECT_NEAR(stroked.textureSize().width, measured.width + 10, 2);
    // A width alone: the texture grows downwards.
    const auto wrapped = model({{"textString", "one two three four five"}, {"textFixedResolution", "150,0"}});
    EXPECT_EQ(wrapped.textureSize().width, 150);
    EXPECT_GT(wrapped.textureSize().height, 2.5 * measured.height);
    EXPECT_EQ(wrapped.textDrawScale(), 1);
    for (const int side : {2047, 2048, 2049}) {
        const auto fixed =
            model({{"textFixedResolution", std::to_string(side) + "," + std::to_string(side)}});
        EXPECT_EQ(fixed.textureSize().width, std::min(side, 2048));
        EXPECT_EQ(fixed.textureSize().height, std::min(side, 2048));
    }
    const auto nothing = model({{"textString", ""}, {"textureSizeMode", 1}});
    EXPECT_GE(nothing.textureSize().width, 1);
    EXPECT_LE(model({{"textString", std::string(4000, 'w')},
                     {"textureSizeMode", 1},
                     {"fontSize", 400},
                     {"textFixedResolution", ""}})
                  .textureSize()
                  .height,
              2048);
}

TEST_F(TextModelTest, AlignmentPlacesTheTextUnlessAPlacementDoes) {
    const auto middle = inkColumns(model({{"textAlignment", 1}}));
    EXPECT_NEAR((middle.first + middle.second) / 2.0, 320, 3);
    EXPECT_LT(inkColumns(model({})).first, 10);
    EXPECT_GT(inkColumns(model({{"textAlignment", 2}})).second, 630);
    EXPECT_GT(inkColumns(model({{"textHorizontalDrawAlignmentMode", "2"}})).second, 630);
    EXPECT_EQ(model({}).description().verticalPlacement, platform::TextPlacement::Middle);
    EXPECT_EQ(model({{"textVerticalDrawAlignmentMode", 0}}).description().verticalPlacement,
              platform::TextPlacement::Start);
}

TEST_F(TextModelTest, ValuesThatMeanNothingStayHarmless) {
    EXPECT_EQ(model({{"textColor", "1,0,0"}}).description().textColor, (platform::Color{1, 0, 0, 1}));
    EXPECT_EQ(model({{"textColor", "1,0,0,0.5"}}).description().textColor.alpha, 0.5f);
    EXPECT_EQ(model({{"textAlignment", 9}}).description().layout.alignment, platform::TextAlignment::Left);
    for (const char* number : {"-5", "nan", "inf", "1e30", "text"}) {
        const auto text = model({{"fontSize", number},
                                 {"strokeWidth", number},
                                 {"textDrawingMode", 2},
                                 {"isShowTextShadow", true},
                                 {"shadowOffset", std::string(number) + "," + number},
                                 {"shadowBlurRadius", number},
                                 {"textFixedResolution", std::string("300,") + number}});
        EXPECT_GE(text.textureSize().height, 1) << number;
        EXPECT_LE(text.textureSize().height, 2048) << number;
        EXPECT_TRUE(std::isfinite(text.textDrawScale())) << number;
        draw(text);
    }
}

TEST_F(TextModelTest, FontsThatAreNotThereAreReportedOnce) {
    model({{"fontName", "$(multiSceneSceneROOT)/none.ttf"}});
    model({{"fontName", "$(multiSceneSceneROOT)/none.ttf"}});
    model({{"fontName", "No Such Letters"}});
    model({});
    ASSERT_EQ(playback_.report().entries().size(), 2u);
    EXPECT_EQ(playback_.report().entries()[0].what, "is a missing font file; another font is used");
    EXPECT_EQ(playback_.report().entries()[1].name, "No Such Letters");
}

}  // namespace
}  // namespace multiscene
