// Videos that are made at the same time in one process, each on its own render queue.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "app/job/PreparedGroup.h"
#include "platform/base/DispatchQueue.h"
#include "tests/app/TemporaryHome.h"
#include "videoRenderCore/QVMediaManage.h"
#include "videoRenderCore/QVVideoCVCacheExporter.h"

namespace multiscene {
namespace {

using platform::DispatchQueue;
namespace fs = std::filesystem;

struct Wanted {
    std::string name;  ///< of a sample
    std::vector<JobInputs::Given> texts;
};

/// One video from its inputs to its file. Prepared by the constructor, played from start() on while somebody
/// pumps the main queue.
class Video : public QVVideoCVCacheExporterDelegate, public std::enable_shared_from_this<Video> {
  public:
    explicit Video(const Wanted& wanted) : group_(prepared(wanted, job_)) {
        VideoExportSettings settings;
        settings.playback = group_.playback;
        settings.layout = group_.layout;
        settings.preset = "ultrafast";
        settings.temporaryFolder = job_.path();
        exporter_ = QVVideoCVCacheExporter::initWithOutputURL(job_.file("film.mp4").string(),
                                                              group_.format.width, group_.format.height,
                                                              group_.format.framesPerSecond, settings);
        driver_ = QVMultiSceneRenderManager::initWithFrameSink(
            group_.playback, exporter_, exporter_,
            {.bufferWidth = group_.layout.drawnWidth, .bufferHeight = group_.layout.drawnHeight});
        driver_->setExportPauseSeconds(0);
        player_ = QVMediaManage::initWithRenderManager(driver_, false);
        player_->setIsRec(true);
        player_->setOnSceneGroupRenderingCompleteBlock([] {});
        player_->setOnSceneGroupRenderingFailedBlock([this](const platform::Error& failure) {
            DispatchQueue::main().async([this, failure] { error = failure; });
        });
    }

    /// `atFrame` is called on the render queue after each frame.
    void start(std::function<void(Video&)> atFrame = {}) {
        exporter_->setDelegate(shared_from_this());
        driver_->setFrameRenderingCompleteBlock([this, atFrame](int64_t) {
            if (atFrame) atFrame(*this);
        });
        player_->loadSceneGroup(group_.group);
    }
    bool hasEnded() const { return !bytes.empty() || error; }
    Playback& playback() { return *group_.playback; }

    void videoExporterFinished(QVVideoCVCacheExporter&, const std::string& videoPath) override {
        bytes = platform::readFile(videoPath, 1u << 28);
    }
    void videoExporter(QVVideoCVCacheExporter&, const platform::Error& failure) override { error = failure; }

    std::vector<uint8_t> bytes;  ///< of the finished film
    std::optional<platform::Error> error;

  private:
    static PreparedGroup prepared(const Wanted& wanted, const JobFolder& job) {
        RenderRequest request;
        request.source = std::string(MULTISCENE_SOURCE) + "/templates/" + wanted.name;
        request.size = MediaSize{180, 320};
        request.inputs.texts = wanted.texts;
        JobObserver observer;
        return prepareGroup(request, job, observer, {});
    }

    JobFolder job_;
    PreparedGroup group_;
    std::shared_ptr<QVVideoCVCacheExporter> exporter_;
    std::shared_ptr<QVMultiSceneRenderManager> driver_;
    std::shared_ptr<QVMediaManage> player_;
};

using Videos = std::vector<std::shared_ptr<Video>>;

void pumpUntilAllHaveEnded(const Videos& videos) {
    DispatchQueue::main().pumpUntil([&] {
        return std::all_of(videos.begin(), videos.end(), [](const auto& video) { return video->hasEnded(); });
    });
}

class TwoVideosTest : public ::testing::Test {
  protected:
    test::TemporaryHome home;
    const Wanted anna{"minimal", {{"text", "Anna"}}}, ben{"minimal", {{"text", "Ben and Bob"}}},
        show{"light-show", {{"title", "Encore"}, {"subtitle", "Friday"}}};
};

TEST_F(TwoVideosTest, AreTheSameBytesAsMadeAlone) {
    const std::vector<Wanted> all{anna, ben, show};
    std::vector<std::vector<uint8_t>> alone;
    for (const Wanted& wanted : all) {
        const auto video = std::make_shared<Video>(wanted);
        video->start();
        pumpUntilAllHaveEnded({video});
        ASSERT_FALSE(video->error) << video->error->what();
        alone.push_back(video->bytes);
    }
    EXPECT_NE(alone[0], alone[1]);
    Videos together;
    for (const Wanted& wanted : all) together.push_back(std::make_shared<Video>(wanted));
    for (const auto& video : together) video->start();
    pumpUntilAllHaveEnded(together);
    for (size_t i = 0; i < all.size(); ++i) {
        EXPECT_FALSE(together[i]->error) << together[i]->error->what();
        EXPECT_TRUE(together[i]->bytes == alone[i]) << i << ": " << all[i].name;
    }
}

TEST_F(TwoVideosTest, HaveEachTheirOwnReportAndFence) {
    const auto good = std::make_shared<Video>(anna), bad = std::make_shared<Video>(ben);
    good->playback().report().add({.what = "noted", .name = "good", .scene = {}, .node = {}});
    good->start();
    bad->start([](Video& video) { video.playback().gate().exists("/etc/hostname"); });
    pumpUntilAllHaveEnded({good, bad});
    EXPECT_FALSE(good->error) << good->error->what();
    EXPECT_FALSE(good->bytes.empty());
    ASSERT_TRUE(bad->error);
    EXPECT_EQ(bad->error->file(), "/etc/hostname");
    EXPECT_TRUE(good->playback().gate().refusals().empty());
    const auto names = [](Video& video) {
        std::vector<std::string> listed;
        for (const auto& entry : video.playback().report().entries()) listed.push_back(entry.name);
        return listed;
    };
    EXPECT_THAT(names(*good), ::testing::Contains("good"));
    EXPECT_THAT(names(*bad), ::testing::Not(::testing::Contains("good")));
    EXPECT_EQ(good->playback().gate().check(bad->playback().settings().currentSceneGroupPlistPathFloder()),
              platform::FileGate::Verdict::Outside)
        << "the folder of the other's job";
}

}  // namespace
}  // namespace multiscene
