// What is held is what is exported, to the last bit: all samples, their values exchanged, frames in any
// order.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

#include "app/job/GroupRun.h"
#include "app/preview/HeldPlayer.h"
#include "output/PictureSink.h"
#include "platform/base/Json.h"
#include "tests/app/TemporaryHome.h"

namespace multiscene {
namespace {

namespace fs = std::filesystem;
using platform::Value;
using Picture = std::vector<uint8_t>;
using Pictures = std::map<int64_t, Picture>;

constexpr int kWidth = 180;

std::vector<fs::path> samples() {
    std::vector<fs::path> folders;
    for (const auto& entry : fs::directory_iterator(fs::path(MULTISCENE_SOURCE) / "templates"))
        if (entry.is_directory()) folders.push_back(entry.path());
    std::ranges::sort(folders);
    return folders;
}

class HeldSamplesTest : public ::testing::TestWithParam<fs::path> {
  protected:
    HeldSamplesTest() {
        request_.source = GetParam().string();
        request_.mostWidth = kWidth;
        const fs::path folder = GetParam() / "sample";
        const Value read = platform::parseJson(test::readText(folder / "inputs.json"), "inputs.json");
        for (const auto& [key, value] : read.dictionary()) {
            const bool isFile = fs::is_regular_file(folder / value.stringValue());
            own_[key] = isFile ? Value((folder / value.stringValue()).string()) : value;
            other_[key] =
                isFile ? otherFile(folder / value.stringValue()) : Value(otherText(value.stringValue()));
        }
    }

    /// The same photo, cut and turned; the same film.
    static Value otherFile(const fs::path& file) {
        const bool isPhoto = file.extension() == ".jpg" || file.extension() == ".png";
        if (!isPhoto) return Value(file.string());
        return Value::Dictionary{
            {"file", file.string()},
            {"crop",
             Value::Dictionary{{"x", 0.2}, {"y", 0.2}, {"width", 0.5}, {"height", 0.5}, {"angle", 20}}}};
    }
    static std::string otherText(std::string text) {
        std::ranges::transform(text, text.begin(), [](char letter) { return letter == 'e' ? 'i' : letter; });
        return text.size() > 4 ? text.substr(0, text.size() - 2) : text + "a";
    }
    /// One half of the values of each.
    Value mixed() const {
        Value::Dictionary values = own_;
        size_t number = 0;
        for (const auto& [key, value] : other_)
            if (++number % 2) values[key] = value;
        return values;
    }

    /// Spread over the video, in each transition, and its ends.
    std::set<int64_t> someFrames(const PreparedGroup& group) {
        const int64_t total = group.totalFrames;
        std::set<int64_t> frames{0, total - 1};
        for (int64_t part = 0; part < 6; ++part)
            frames.insert(part * total / 6 +
                          static_cast<int64_t>(random_() % static_cast<uint64_t>(total / 6)));
        int64_t end = 0;
        for (const Value& entry : group.group.entries) {
            const auto* scene = group.group.scene(entry.integer("mainSceneId"));
            const Value& transition = entry["sceneTansitionsInfo"];
            if (!scene) continue;
            end += scene->record.fpsLength;
            const int64_t length = transition.integer("fpsTotal");
            if (length < 1) continue;
            for (const int64_t before : {length - 1, length / 2, int64_t{1}, int64_t{0}})
                if (end - before < total) frames.insert(end - before);
            if (transition.integer("sceneTansitionsType") == 0) end -= length;
        }
        return frames;
    }

    Pictures exported(const Value& values, const std::set<int64_t>& frames) {
        RenderRequest request = request_;
        request.inputs.media = values;
        const JobFolder job;
        const PreparedGroup group = prepareGroup(request, job, observer_, stop_.get_token());
        Pictures pictures;
        const auto sink = std::make_shared<PictureSink>(
            group.layout,
            [&](const PictureSink::Picture& picture) {
                pictures[picture.frame].assign(
                    picture.rgba, picture.rgba + size_t(picture.width) * size_t(picture.height) * 4);
            },
            [&](int64_t frame) { return frames.contains(frame); });
        GroupRun(group, sink, nullptr, observer_, stop_.get_token()).play();
        return pictures;
    }

    Picture held(HeldPlayer& player, int64_t frame) {
        const MediaFormat& format = player.format();
        Picture picture(size_t(format.width) * size_t(format.height) * 4);
        const auto outcome = player.show(frame, {.pixels = picture.data(),
                                                 .stride = ptrdiff_t{format.width} * 4,
                                                 .width = format.width,
                                                 .height = format.height});
        EXPECT_EQ(outcome, HeldPlayer::Outcome::Shown) << frame;
        for (size_t at = 0; at < picture.size(); at += 4) std::swap(picture[at], picture[at + 2]);
        return picture;
    }

    RenderRequest request_;
    Value::Dictionary own_, other_;
    std::minstd_rand random_{7};
    JobObserver observer_;
    std::stop_source stop_;
    test::TemporaryHome home_;
};

TEST_P(HeldSamplesTest, ShowsWhatIsExportedWhateverIsAskedForInWhateverOrder) {
    request_.inputs.media = own_;
    HeldPlayer player(request_, observer_, stop_.get_token());
    player.holdFrames();
    const std::set<int64_t> chosen = someFrames(player.group());
    const std::vector<Value> values{Value(own_), mixed(), Value(other_)};
    std::vector<Pictures> wanted;
    for (const Value& each : values) wanted.push_back(exported(each, chosen));
    ASSERT_EQ(wanted[0].size(), chosen.size());

    // In order, then in any; at each frame all values in turn, going on with another one each time.
    std::vector<int64_t> frames(chosen.begin(), chosen.end());
    for (int round = 0; round < 2; ++round) {
        size_t first = 0;
        for (const int64_t frame : frames) {
            for (size_t turn = 0; turn < values.size(); ++turn) {
                const size_t which = (first + turn) % values.size();
                JobInputs inputs;
                inputs.media = values[which];
                player.setInputs(inputs, stop_.get_token());
                ASSERT_TRUE(held(player, frame) == wanted[which].at(frame))
                    << "frame " << frame << ", values " << which << ", round " << round;
            }
            first += 2;
        }
        std::ranges::shuffle(frames, random_);
        frames.resize(std::min<size_t>(frames.size(), 6));
    }
}

INSTANTIATE_TEST_SUITE_P(All, HeldSamplesTest, ::testing::ValuesIn(samples()), [](const auto& sample) {
    std::string name = sample.param.filename().string();
    std::ranges::replace(name, '-', '_');
    return name;
});

}  // namespace
}  // namespace multiscene
