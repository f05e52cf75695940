#include <algorithm>

#include "platform/base/Clock.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

class CommandLineTest : public ProgramTest {};

}  // namespace

TEST_F(CommandLineTest, HelpNamesEveryCommandAndEachHasItsOwn) {
    const Result all = run({program(), "--help"});
    EXPECT_EQ(all.exitCode, 0);
    for (const std::string name : {"make", "render", "frames", "trace", "check", "scene-format"}) {
        EXPECT_THAT(all.output, HasSubstr(name));
        const Result one = run({program(), name, "--help"});
        EXPECT_EQ(one.exitCode, 0);
        EXPECT_THAT(one.output, HasSubstr("Example:"));
    }
    EXPECT_THAT(all.output, HasSubstr("docs/scene-format.md"));
    EXPECT_THAT(run({program(), "--version"}).output, HasSubstr("multiscene "));
}

TEST_F(CommandLineTest, WrongUsageIsOneLineAndExitTwo) {
    const std::vector<std::vector<std::string>> calls{
        {}, {"mak"}, {"make"}, {"make", "x"}, {"frames", "x", "-o", "d", "--at", "1,b"}, {"check", "a", "b"}};
    for (const auto& call : calls) {
        const Result result = multiscene(call);
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
        EXPECT_THAT(result.output, IsEmpty());
    }
}

TEST_F(CommandLineTest, GlobalOptionsStandAnywhereAndJsonTellsErrorsToo) {
    const auto path = SmallTemplate().write(folder.path());
    const Result result =
        run({program(), "check", "--json", path, "--home", folder.file("home"), "--verbose"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.jsonLines().back().string("event"), "done");

    const Result wrong = run({program(), "make", path, "--json", "--size", "1x1", "-o", folder.file("o.mp4"),
                              "--home", folder.file("home")});
    ASSERT_EQ(wrong.jsonLines().size(), 1u) << wrong.output;
    EXPECT_EQ(wrong.jsonLines()[0].string("event"), "error");
    EXPECT_EQ(wrong.jsonLines()[0].integer("code"), 2);
}

/// Who starts the program may have closed its standard descriptors, and ignore how its children end.
TEST_F(CommandLineTest, RunsHoweverItWasStarted) {
    const std::string path = SmallTemplate().write(folder.path());
    for (const std::string closed : {"<&-", ">&-", "2>&-", "<&- >&- 2>&-"}) {
        const auto make = command({"make", path, "-o", folder.file("out.mp4")});
        std::vector<std::string> words{
            "timeout", "60", "env", "--ignore-signal=CHLD", "sh", "-c", "exec \"$0\" \"$@\" " + closed};
        words.insert(words.end(), make.begin(), make.end());
        EXPECT_EQ(run(words).exitCode, 0) << closed;
        EXPECT_TRUE(fs::remove(folder.path() / "out.mp4")) << closed;
    }
}

/// What is all that comes of a command must not get lost; a video is there whatever is said of it.
TEST_F(CommandLineTest, AFullDiskBehindStandardOutputIsTold) {
    const std::string path = SmallTemplate().write(folder.path());
    const auto answer = [&](const std::vector<std::string>& given, const std::string& into) {
        std::vector<std::string> words{"sh", "-c", "exec \"$0\" \"$@\" " + into};
        const auto all = command(given);
        words.insert(words.end(), all.begin(), all.end());
        return run(words).exitCode;
    };
    for (const std::string command : {"scene-format", "trace", "check"})
        EXPECT_EQ(answer(command == "scene-format" ? std::vector{command} : std::vector{command, path},
                         ">/dev/full"),
                  75)
            << command;
    EXPECT_EQ(answer({"make", path, "-o", folder.file("out.mp4")}, ">/dev/full"), 0);
    EXPECT_EQ(answer({"scene-format"}, "| true"), 0);
}

TEST_F(CommandLineTest, PairsMayFollowOneOptionAndTextsHoldLineBreaks) {
    SmallTemplate small;
    small.description["userInputArray"] =
        Value::Array{Value::Dictionary{{"userInputType", 0}, {"renderMapKey", "title"}},
                     Value::Dictionary{{"userInputType", 1}, {"renderMapKey", "photo"}}};
    const std::string path = small.write(folder.path());
    const auto frame = [&](const std::vector<std::string>& inputs) {
        std::vector<std::string> words{"frames", "--at", "0", "-o", folder.file("out")};
        words.insert(words.end(), inputs.begin(), inputs.end());
        words.push_back(path);
        const Result result = multiscene(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return contentOf(folder.path() / "out/frame-000000.png");
    };
    EXPECT_TRUE(frame({"--text", R"(title=a\nb)"}) == frame({"--text", "title=a\nb"}));
    EXPECT_TRUE(frame({"--text", R"(title=a\\nb)"}) != frame({"--text", "title=a\nb"}));
    EXPECT_TRUE(frame({"--text", R"(title=a\\nb)"}) != frame({"--text", "title=a"}));
    const Result second = multiscene({"frames", path, "--text", "title=Hi", "titel=x", "-o", "none"});
    EXPECT_EQ(second.exitCode, 4);
    EXPECT_THAT(second.errors, HasSubstr("titel: the template does not ask for this"));
}

TEST_F(CommandLineTest, EndsWhenTheCommandHasEnded) {
    if (sanitizerFactor() > 1) GTEST_SKIP() << "most of the time is the sanitizer's";
    const auto shortest = [](const std::vector<std::string>& words) {
        double seconds = 1e9;
        for (int round = 0; round < 10; ++round) {
            const double start = platform::monotonicSeconds();
            run(words);
            seconds = std::min(seconds, platform::monotonicSeconds() - start);
        }
        return seconds;
    };
    // Both print a text; only a command listens for signals meanwhile. A busy machine may be slow for a
    // while.
    double late = 1;
    for (int attempt = 0; attempt < 10 && late >= 0.12; ++attempt)
        late = shortest({program(), "scene-format"}) - shortest({program(), "--limits"});
    EXPECT_LT(late, 0.12);
}

}  // namespace multiscene::test
