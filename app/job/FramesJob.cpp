#include "app/job/FramesJob.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include "app/job/GroupRun.h"
#include "app/job/OutputFile.h"
#include "output/PictureSink.h"
#include "platform/base/Clock.h"
#include "platform/base/File.h"
#include "platform/base/FolderListing.h"
#include "platform/base/PartFolder.h"
#include "platform/image/ImageWriter.h"

namespace multiscene {

namespace fs = std::filesystem;

namespace {

/// The video's picture: what lies behind the scene is black.
void makeOpaque(std::vector<uint8_t>& rgba) {
    for (size_t alpha = 3; alpha < rgba.size(); alpha += 4) rgba[alpha] = 255;
}

/// Blending over nothing leaves colours multiplied by alpha; PNG files hold them as they are.
void divideByAlpha(std::vector<uint8_t>& rgba) {
    for (size_t pixel = 0; pixel < rgba.size(); pixel += 4) {
        const int alpha = rgba[pixel + 3];
        for (size_t channel = pixel; alpha > 0 && alpha < 255 && channel < pixel + 3; ++channel)
            rgba[channel] = static_cast<uint8_t>(std::min((rgba[channel] * 255 + alpha / 2) / alpha, 255));
    }
}

std::string pictureName(int64_t frame) {
    char name[40];
    std::snprintf(name, sizeof name, "frame-%06lld.png", static_cast<long long>(frame));
    return name;
}

bool isPictureName(std::string_view name) {
    constexpr std::string_view before = "frame-", after = ".png";
    constexpr size_t leastDigits = 6;
    if (!name.starts_with(before) || !name.ends_with(after)) return false;
    name.remove_prefix(before.size());
    name.remove_suffix(after.size());
    return name.size() >= leastDigits && name.find_first_not_of("0123456789") == std::string_view::npos;
}

/// The pictures of one job, written on the render queue; removed again unless kept.
class PictureFiles {
  public:
    PictureFiles(fs::path folder, bool keepsAlpha) : folder_(std::move(folder)), keepsAlpha_(keepsAlpha) {}
    ~PictureFiles() {
        std::error_code ignored;
        for (const fs::path& file : written_) fs::remove(file, ignored);
    }
    PictureFiles(const PictureFiles&) = delete;
    PictureFiles& operator=(const PictureFiles&) = delete;

    void write(const PictureSink::Picture& picture) {
        const fs::path file = folder_ / pictureName(picture.frame);
        const int stride = picture.width * 4;
        shown_.assign(picture.rgba, picture.rgba + size_t(stride) * size_t(picture.height));
        keepsAlpha_ ? divideByAlpha(shown_) : makeOpaque(shown_);
        platform::writePng(file, {picture.width, picture.height, shown_.data(), stride});
        written_.push_back(file);
    }

    /// The pictures stay; returns how many there are.
    int64_t keep() {
        const auto count = static_cast<int64_t>(written_.size());
        written_.clear();
        return count;
    }

  private:
    fs::path folder_;
    bool keepsAlpha_;
    std::vector<uint8_t> shown_;
    std::vector<fs::path> written_;
};

/// Regular files alone: what else lies there was not made by writeFrames().
std::set<std::string> picturesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const fs::path& file : platform::filesIn(folder))
        if (const std::string name = file.filename().string();
            isPictureName(name) && fs::is_regular_file(fs::symlink_status(file)))
            names.insert(name);
    return names;
}

void throwIfCancelled(const std::function<bool()>& isCancelled) {
    if (isCancelled && isCancelled()) throw platform::Error(platform::ErrorKind::Cancelled, "cancelled");
}

/// While it is open, no other job puts its pictures there. A folder that cannot be locked holds nobody up.
platform::FileHandle turnIn(const fs::path& folder, const std::function<bool()>& isCancelled) {
    constexpr double pause = 0.02;  // seconds
    platform::FileHandle turn = platform::openFile(folder, O_RDONLY | O_DIRECTORY);
    while (turn && ::flock(turn.descriptor(), LOCK_EX | LOCK_NB) != 0 &&
           (errno == EWOULDBLOCK || errno == EINTR)) {
        throwIfCancelled(isCancelled);
        platform::sleepSeconds(pause);
    }
    return turn;
}

/// Renames within one file system, which can be undone.
class Moves {
  public:
    explicit Moves(const std::function<bool()>& isCancelled) : isCancelled_(isCancelled) {}

    void move(const std::set<std::string>& names, const fs::path& from, const fs::path& to) {
        for (const std::string& name : names) {
            throwIfCancelled(isCancelled_);
            if (::rename((from / name).c_str(), (to / name).c_str()) != 0)
                throw platform::errnoError(errno, "cannot write", (to / name).string());
            done_.emplace_back(from / name, to / name);
        }
    }

    /// False where the disk does not let it.
    bool undo() {
        while (!done_.empty() && ::rename(done_.back().second.c_str(), done_.back().first.c_str()) == 0)
            done_.pop_back();
        return done_.empty();
    }

  private:
    const std::function<bool()>& isCancelled_;
    std::vector<std::pair<fs::path, fs::path>> done_;
};

}  // namespace

void movePictures(const fs::path& from, const fs::path& to, const std::function<bool()>& isCancelled) {
    const platform::FileHandle turn = turnIn(to, isCancelled);
    // Pictures of two jobs side by side would look like those of one, even to whoever looks in the midst of
    // it.
    const platform::PartFolder arriving(to, "new-pictures");
    platform::PartFolder leaving(to, "old-pictures");
    const std::set<std::string> pictures = picturesIn(from), older = picturesIn(to);
    for (const std::string& name : pictures) {
        throwIfCancelled(isCancelled);
        platform::moveFile(from / name, arriving.path() / name);
    }
    Moves moves(isCancelled);
    try {
        moves.move(older, to, leaving.path());
        moves.move(pictures, arriving.path(), to);
    } catch (...) {
        if (!moves.undo()) leaving.leave();
        throw;
    }
}

JobSummary writeFrames(const FramesRequest& request, JobObserver& observer, std::stop_token stop) {
    const double start = platform::monotonicSeconds();
    const fs::path folder = outputFolder(request.output);
    const JobFolder job;
    const PreparedGroup group = prepareGroup(request, job, observer, stop);

    const FrameSelection& wanted = request.selection;
    wanted.requireAnnounced(group.totalFrames);
    PictureFiles files(folder, request.keepsAlpha);
    const auto sink = std::make_shared<PictureSink>(
        group.layout, [&files](const PictureSink::Picture& picture) { files.write(picture); },
        [&wanted](int64_t frame) { return wanted.contains(frame); });
    GroupRun run(group, sink, nullptr, observer, std::move(stop));
    run.setFrameLimit(wanted.framesNeeded());
    const int64_t frames = run.play();
    wanted.requireWithin(frames);
    JobSummary summary = summaryOf(group, frames, run);
    summary.pictures = files.keep();
    summary.output = folder;
    summary.wallSeconds = platform::monotonicSeconds() - start;
    return summary;
}

}  // namespace multiscene
