#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/CommandLine.h"
#include "cli/ToldTemplate.h"
#include "platform/base/Error.h"
#include "platform/base/Limits.h"

namespace multiscene::test {
namespace {

using ::testing::HasSubstr;

/// Why words are refused, with the option at the front; empty when they are taken.
std::string refusal(const std::vector<std::string>& words) {
    std::vector<const char*> given{"multiscene"};
    for (const std::string& word : words) given.push_back(word.c_str());
    try {
        EXPECT_TRUE(cli::parseCommandLine(static_cast<int>(given.size()), given.data()).command);
        return "";
    } catch (const platform::Error& error) {
        EXPECT_EQ(error.kind(), platform::ErrorKind::Usage);
        return error.key() + ": " + error.message();
    }
}

/// Values at the ends of what an option takes, and just beyond.
struct Option {
    std::string name;
    std::vector<std::string> taken, refused;
};

const std::vector<std::string> make{"make", "t", "-o", "o.mp4"}, frames{"frames", "t", "-o", "d"};

const std::pair<std::vector<std::string>, Option> options[] = {
    {make, {"--text", {"a=b", "a=", R"(a=\n\\\x)", "a=b\\", "a==b"}, {"Hello", "=b"}}},
    {make, {"--photo", {"p=a.jpg"}, {"a.jpg"}}},
    {make, {"--video", {"p=a.mp4"}, {"a.mp4"}}},
    {make, {"--video-volume", {"v=0.5"}, {"0.5"}}},
    {make, {"--video-start", {"v=2.5"}, {"2.5"}}},
    {make,
     {"--crop",
      {"p=0,0,1,1", "p=0.5,0.25,0.5,0.75", "p=0.7,0.7,0.3,0.3", "p=0,0,1,1,-360", "p=-1,0.25,3,0.5,90"},
      {"p", "=0,0,1,1", "p=0,0,1", "p=0,0,1,1,1,1", "p=0,0,1,1,361", "p=0.6,0,1,1,5", "p=0,0,17,1,5",
       "p=0.5,0,0.6,1", "p=0,0.5,1,0.6", "p=0.5,0,0,1", "p=0,0.5,1,0", "p=0,0,300,200", "p=-0.1,0,1,1",
       "p=0,0,1,1x", "p=0,0,1,", "p=nan,0,1,1"}}},
    {make, {"--focus", {"p=0,1", "p=0.5,0.5"}, {"p=left,0", "p=0.5", "p=0.5,1.01", "0.5,0.5"}}},
    {make, {"--size", {"720x1280", "2X2"}, {"big", "720,1280", "720x", "0x2", "7 20x2", "720x1280x2"}}},
    {make, {"--fps", {"1", "1000"}, {"0", "1001", "30.5", "99999999999999999999", "x"}}},
    {make, {"--fit", {"blur", "pad", "crop", "stretch"}, {"squash"}}},
    {make, {"--renderer", {"auto", "gl", "software"}, {"vulkan"}}},
    {make, {"--music-volume", {"0", "4"}, {"-0.1", "4.1", "nan", "1x", "loud"}}},
    {make, {"--music-start", {"0", "86400"}, {"-1", "86400.5"}}},
    {make, {"--music-fade", {"2", "0.5,3"}, {"1,x", ",1", "1,2,3"}}},
    {make, {"--loudness", {"off", "-50", "-5"}, {"-4.9", "-50.1", "loud"}}},
    {make,
     {"--bitrate",
      {"1000", "1k", "1K", "500m", "500M", "500000000"},
      {"999", "0k", "-1k", "501M", "500000001", "1.5M", "k", "M5"}}},
    {make, {"--preset", {"veryfast", "slow"}, {"placebo!", "fast slow", " "}}},
    {frames, {"--at", {"0", "0,5,5"}, {"1,b", "-1", "1,", "1,-1", "0.5"}}},
    {frames, {"--every", {"1", "2147483647"}, {"0", "2147483648"}}},
};

}  // namespace

TEST(OptionsTest, TakeWhatLiesWithinTheirLimitsAndNameThemselvesBeyond) {
    for (const auto& [command, option] : options) {
        const auto answer = [&, &words = command, &name = option.name](const std::string& value) {
            std::vector<std::string> all = words;
            all.push_back(name + "=" + value);
            return refusal(all);
        };
        for (const std::string& value : option.taken)
            EXPECT_EQ(answer(value), "") << option.name << " " << value;
        for (const std::string& value : option.refused)
            EXPECT_EQ(answer(value).substr(0, option.name.size() + 2), option.name + ": ") << value;
    }
}

TEST(OptionsTest, WrongWordsAreToldWithARemedy) {
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{"mak"}, "did you mean \"make\"?"},
        {{"templates", "lst"}, "did you mean \"list\"?"},
        {{"templates"}, "multiscene templates --help"},
        {{"zzzzzz"}, "unknown command \"zzzzzz\" (see"},
        {{"--home", "h", "--verbose", "mak"}, "did you mean \"make\"?"},
        {{"make", "t", "--musik=y"}, "did you mean \"--music\"?"},
        {{"make", "t", "--zzzzzz"}, "unknown option --zzzzzz (see"},
        {{"make", "t", "--text", "a=Happy", "birthday"}, "\"birthday\" is one word too many"},
        {{"make", "t", "-o"}, "--output needs a value"},
        {{"make", "t"}, "--output is required"},
        {{"make", "t", "-o", "a.mp4", "--fps", "30", "--fps", "31"}, "--fps is given more than once"},
        {{"--limit", "maxJobSeconds=9", "make"}, "TEMPLATE is required"},
        {{"make", "t", "--fps=", "-o", "a.mp4"}, "--fps: \"\" is not a whole number"},
        {{"template", "pack", ""}, "DIR: is empty"},
        {{"--home", "", "templates", "list"}, "--home: is empty"},
        {{"make", "t", "-o", "a.mp4", "--limit", "maxScenes=1"}, "is no limit that can be changed"},
    };
    for (const auto& [words, remedy] : cases) EXPECT_THAT(refusal(words), HasSubstr(remedy));
}

TEST(ToldTemplateTest, TakesAsManyBytesAsTheTableSays) {
    const size_t most = platform::limitOf<size_t>("maxToldBytes");
    const std::vector<std::string> record{"record", "1", "s.plist", "", "3", "", "1", "0", "", "", ""};
    const std::string word = "info";
    size_t used = word.size();
    for (const std::string& field : record) used += field.size();
    for (const size_t bytes : {most - 1, most, most + 1}) {
        cli::ToldTemplate told("t", "/t");
        told.hear(record);
        const std::vector<std::string> info{word, std::string(bytes - used, ' ')};
        if (bytes <= most)
            EXPECT_NO_THROW(told.hear(info));
        else
            EXPECT_THROW(told.hear(info), platform::Error);
    }
}

}  // namespace multiscene::test
