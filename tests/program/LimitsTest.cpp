// Every limit of the program's table, tried one below, at, and one above.
#include <set>

#include "tests/program/LimitTrial.h"

namespace multiscene::test {

namespace {

std::vector<Trial> all() {
    std::vector<Trial> trials;
    for (auto& group : {fileTrials(), meshTrials(), pictureTrials(), soundAndFilmTrials(), templateTrials()})
        trials.insert(trials.end(), group.begin(), group.end());
    return trials;
}

class LimitsTest : public PlayLimitsTest, public ::testing::WithParamInterface<Trial> {};

}  // namespace

TEST_P(LimitsTest, HoldsToTheLast) {
    const Trial& trial = GetParam();
    const uint64_t most = trial.most(), beyond = trial.isLeast ? most - 1 : most + 1;
    ASSERT_GT(most, 0u);
    for (const uint64_t number : {trial.isLeast ? most + 1 : most - 1, most}) {
        const Verdict verdict = trial.with(*this, number);
        EXPECT_EQ(verdict.code, kAccepted) << number << ": " << verdict.said.substr(0, 1000);
    }
    const Verdict refused = trial.with(*this, beyond);
    EXPECT_EQ(refused.code, trial.code) << refused.said.substr(0, 1000);
    for (const std::string& named : trial.named) EXPECT_THAT(refused.said.substr(0, 4000), HasSubstr(named));
    EXPECT_THAT(refused.said.substr(0, 4000), HasSubstr(std::to_string(most)));
}

INSTANTIATE_TEST_SUITE_P(All, LimitsTest, ::testing::ValuesIn(all()),
                         [](const auto& trial) { return trial.param.limit; });

/// What is added to the table is tried here, or is said to be tried elsewhere.
TEST(LimitsTableTest, EveryLimitIsTried) {
    std::set<std::string> tried{
        // to the last, in platform's FenceTest: what a job may take, as it follows from what it makes
        "jobMemory", "jobMemoryPerPixel", "maxJobMemory", "jobSeconds", "jobMillisecondsPerFrame",
        "jobNanosecondsPerPixel", "maxJobCpuSeconds", "maxJobSeconds", "jobFileBytes", "jobFileBytesPerPixel",
        "maxJobFileBytes", "maxJobOpenFiles", "maxJobThreads",
        // in HttpDownloadTest
        "maxDownloadTries", "maxRedirects",
        // in TextureTest, MeshObjectTest, FilterTest, TextModelTest, LetterTest, ImageTest, TextTest, PvrTest
        "maxCanvasSide", "maxMeshPictureSide", "maxFilteredSide", "maxTextTextureSide", "maxBevelSteps",
        "maxDecodedPixels", "maxFontFiles", "maxPvrBytes",
        // in OptionsTest, CheckTest, WatchTest
        "maxToldBytes", "maxSequencePictures", "maxWatchedFolders",
        // well below and beyond, as no clock is that sharp: in FenceTest and HttpDownloadTest
        "maxStepCpuSeconds", "maxStepSeconds", "minDownloadSpeed", "maxStallSeconds", "maxConnectSeconds",
        "maxDownloadSeconds", "maxListSeconds",
        // by what it leads to, in LetterTest and TextureTest
        "maxLetterCorners", "maxTextBitmapSide",
        // whole files, all of which one function reads: maxMediaFileBytes tries it
        "maxTrackBytes", "maxThumbnailBytes", "maxCatalogueBytes"};
    for (const Trial& trial : all()) EXPECT_TRUE(tried.emplace(trial.limit).second) << trial.limit;
    for (const platform::Limit& limit : platform::limits::kAll)
        EXPECT_EQ(tried.erase(std::string(limit.name)), 1u) << limit.name;
    EXPECT_TRUE(tried.empty()) << *tried.begin() << " is no limit";
}

TEST_F(PlayLimitsTest, AsManyNodesAsAreAllowedArePlayed) {
    SmallTemplate small;
    fillNodes(small, limitOf("maxSceneNodes"));
    const std::filesystem::path path = small.write(folder.path());
    const Result result = inTime({"frames", path, "--at", "0,5", "-o", folder.file("out")}, 4);
    EXPECT_EQ(result.exitCode, 0) << result.errors.substr(0, 1000);
}

/// Force does not help, and no such template is packed.
TEST_F(PlayLimitsTest, HoldForEveryCommand) {
    for (const auto& fill : {fillNodes, fillFiles, fillScenes, fillTargets}) {
        const uint64_t beyond =
            fill == &fillTargets ? limitOf("maxSceneTargetBytes") + 1 : limitOf("maxSceneNodes") + 1;
        SmallTemplate small;
        fill(small, beyond);
        const std::filesystem::path path = small.write(folder.path());
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"frames", path, "--at", "0", "--force", "-o", folder.file("out")},
              std::vector<std::string>{"template", "pack", path, "-o", folder.file("out.zip")}}) {
            const Result result = inTime(words);
            EXPECT_EQ(result.exitCode, kTemplate) << words.front();
            EXPECT_THAT(result.output + result.errors, HasSubstr("allowed")) << words.front();
        }
    }
}

}  // namespace multiscene::test
