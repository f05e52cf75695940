#include <csignal>
#include <fstream>

#include "platform/base/Clock.h"
#include "platform/fence/WorkerLimits.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

class ProgramFenceTest : public ProgramTest {
  protected:
    std::vector<std::string> longJob() const {
        SmallTemplate small;
        small.clock = clockOf(1'000'000);
        small.record["fpsLength"] = 1'000'000;
        return {"make", small.write(folder.path()), "--json", "-o", folder.file("out.mp4")};
    }

    /// The process that does the work.
    static pid_t workerOf(const Process& process) {
        const std::string number = std::to_string(process.number());
        std::ifstream children("/proc/" + number + "/task/" + number + "/children");
        pid_t worker = 0;
        children >> worker;
        return worker;
    }

    /// Not dead, as one that nobody has looked after yet is.
    static bool isAlive(pid_t process) {
        std::ifstream status("/proc/" + std::to_string(process) + "/stat");
        std::string number, name, state;
        return status >> number >> name >> state && state != "Z";
    }

    void expectNothingLeft() const {
        EXPECT_THAT(leftBehind(), IsEmpty());
        EXPECT_THAT(filesNamed("out.mp4"), IsEmpty());
    }

    Result checkShader(const std::string& source, const std::string& command = "check") const {
        SmallTemplate small;
        small.shaderSource = source;
        Value::Dictionary node = quad("shaded", "$(currentScenePlistROOT)/red.png");
        node["type"] = "QVQuadCustomShaderOneVariable";
        node["FpsInfo"] = Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}};
        small.nodes = {node};
        const fs::path path = small.write(folder.path());
        if (command == "check") return multiscene({"check", path});
        return multiscene({command, path, "-o", folder.file("out")});
    }

    using Value = platform::Value;
};

}  // namespace

TEST_F(ProgramFenceTest, TheSelfTestFindsNoWayOut) {
    const Result result = multiscene({"selftest"});
    EXPECT_EQ(result.exitCode, 0) << result.output;
    EXPECT_THAT(result.output, AllOf(HasSubstr("fence: "), HasSubstr("read a private key: "),
                                     HasSubstr("loop for ever: denied"), Not(HasSubstr("ALLOWED"))));
    EXPECT_THAT(leftBehind(), IsEmpty());
    const Result json = multiscene({"selftest", "--json"});
    EXPECT_EQ(json.jsonLines().front().string("event"), "fence");
    EXPECT_TRUE(json.jsonLines().back().boolean("holds"));
}

/// As in a decoder that never returns.
TEST_F(ProgramFenceTest, ASignalEndsAJobThatListensToNobody) {
    Process process(command(longJob()));
    ASSERT_TRUE(process.waitForOutput("\"progress\""));
    const pid_t worker = workerOf(process);
    ASSERT_TRUE(isAlive(worker));
    ::kill(worker, SIGSTOP);
    const double asked = platform::monotonicSeconds();
    process.signal(SIGTERM);
    EXPECT_EQ(process.finish().exitCode, 130);
    EXPECT_LT(platform::monotonicSeconds() - asked, 20) << "it hangs";
    EXPECT_FALSE(isAlive(worker));
    expectNothingLeft();
}

TEST_F(ProgramFenceTest, AWorkerThatCrashesIsOneErrorThatSaysWhere) {
    if (platform::isSanitized()) GTEST_SKIP() << "sanitizers have their own way with crashes";
    Process process(command(longJob()));
    ASSERT_TRUE(process.waitForOutput("\"progress\""));
    ::kill(workerOf(process), SIGSEGV);
    const Result result = process.finish();
    EXPECT_EQ(result.exitCode, 3) << result.errors;
    EXPECT_EQ(result.errorLines().size(), 1u) << result.errors;
    EXPECT_THAT(result.errors,
                AllOf(HasSubstr("small"), HasSubstr("crashed (segmentation fault) while drawing frame")));
    EXPECT_EQ(result.jsonLines().back().string("event"), "error");
    expectNothingLeft();
}

TEST_F(ProgramFenceTest, AWorkerDiesWithItsProgram) {
    Process process(command(longJob()));
    ASSERT_TRUE(process.waitForOutput("\"progress\""));
    const pid_t worker = workerOf(process);
    process.signal(SIGKILL);
    process.finish();
    for (int turn = 0; turn < 100 && isAlive(worker); ++turn) platform::sleepSeconds(0.01);
    EXPECT_FALSE(isAlive(worker));
    EXPECT_THAT(filesNamed("out.mp4"), IsEmpty());
}

TEST_F(ProgramFenceTest, LimitsOfAJobAreToldAndChanged) {
    auto words = longJob();
    words.insert(words.end(), {"--limit", "maxJobSeconds=2"});
    const Result late = multiscene(words);
    EXPECT_EQ(late.exitCode, 3) << late.errors;
    EXPECT_THAT(late.errors, HasSubstr("takes longer than 2 s (maxJobSeconds) while drawing frame"));
    words.back() = "maxJobMemory=16777216";
    if (!platform::isSanitized()) {
        EXPECT_THAT(multiscene(words).errors, HasSubstr("memory"));
    }
    words.back() = "maxJobMemory=much";
    EXPECT_EQ(multiscene(words).exitCode, 2);
    expectNothingLeft();
}

/// A template cannot have the program open what lies elsewhere, nor can the worker.
TEST_F(ProgramFenceTest, OnlyWhatIsNamedIsRead) {
    SmallTemplate small;
    writePicture(folder.path() / "secret.png", 0x00ff00);
    small.nodes = {quad("secret", folder.file("secret.png"))};
    const auto path = small.write(folder.path());
    const Result result = multiscene({"check", path});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.output, HasSubstr("outside the template's folder"));
}

TEST_F(ProgramFenceTest, HostileShadersAreRefusedByFileInAMoment) {
    std::string macros = "#define A0 1.0+\n";
    for (int level = 1; level <= 40; ++level) {
        const std::string lower = "A" + std::to_string(level - 1);
        macros += "#define A" + std::to_string(level) + " " + lower + " " + lower + "\n";
    }
    const struct {
        std::string source, problem;
    } cases[] = {
        {macros + "void main() { gl_FragColor = vec4(A16 1.0); }", "macros expanded"},
        {macros + "void main() { gl_FragColor = vec4(A40 1.0); }", "macros expanded"},
        {"void main() { while (true) {} }", "\"while\""},
        {"void main() { highp float a[1000000]; }", "elements in an array"},
    };
    for (const auto& each : cases)
        for (const char* command : {"check", "frames"}) {
            const double start = platform::monotonicSeconds();
            const Result result = checkShader(each.source, command);
            EXPECT_EQ(result.exitCode, 3) << command << result.errors;
            EXPECT_THAT(result.output + result.errors, AllOf(HasSubstr("own.fsh"), HasSubstr(each.problem)));
            EXPECT_LT(platform::monotonicSeconds() - start, 60) << "it hangs";
        }
}

}  // namespace multiscene::test
