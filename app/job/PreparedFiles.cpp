#include "app/job/PreparedFiles.h"

#include <algorithm>
#include <system_error>

#include "platform/base/FileGate.h"

namespace multiscene {

namespace fs = std::filesystem;

namespace {

constexpr int64_t kRoundsKept = 16;
constexpr size_t kMostVideos = 64;

}  // namespace

fs::path PreparedFiles::photo(const platform::FileHandle& file, const PhotoShape& shape,
                              const platform::ImageSource& source) {
    const auto stamp = platform::FileStamp::of(file);
    const auto known = std::ranges::find_if(
        photos_, [&](const Photo& each) { return stamp && each.file == stamp && each.shape == shape; });
    if (known != photos_.end()) {
        known->lastRound = round_;
        return known->prepared;
    }
    const fs::path prepared = job_.file("photo-" + std::to_string(made_++));
    platform::prepareUserPhoto(file, prepared, shape.aspect, shape.longSide, source, shape.crop);
    photos_.push_back({stamp, shape, prepared, round_});
    return prepared;
}

UserVideo PreparedFiles::video(const fs::path& video, int framesPerSecond, int64_t firstFrame,
                               int64_t mostFrames, platform::FileGate& gate, const std::stop_token& stop) {
    const auto stamp = platform::FileStamp::of(gate.open(fs::absolute(video).lexically_normal()).file);
    const auto known = std::ranges::find_if(videos_, [&](const Video& each) {
        return each.path == video && each.file == stamp && each.framesPerSecond == framesPerSecond &&
               each.firstFrame == firstFrame && each.mostFrames == mostFrames;
    });
    if (known != videos_.end()) return known->judged;
    UserVideo judged = judgeUserVideo(video, framesPerSecond, firstFrame, mostFrames, gate, stop);
    if (videos_.size() >= kMostVideos) videos_.pop_front();
    if (stamp) videos_.push_back({video, *stamp, framesPerSecond, firstFrame, mostFrames, judged});
    return judged;
}

void PreparedFiles::endRound() {
    ++round_;
    photos_.remove_if([&](const Photo& photo) {
        if (photo.lastRound + kRoundsKept >= round_) return false;
        std::error_code ignored;
        fs::remove(photo.prepared, ignored);
        return true;
    });
}

}  // namespace multiscene
