#include "tests/program/ProgramTest.h"

namespace multiscene::test {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

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
    EXPECT_THAT(multiscene({"mak"}).errors, HasSubstr("did you mean \"make\"?"));
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

}  // namespace multiscene::test
