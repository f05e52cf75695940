#include "studio/templates/SampleVideos.h"

#include <sys/stat.h>

#include <algorithm>

#include "platform/base/File.h"
#include "platform/crypto/Secret.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr int kWidth = 360, kLastPlace = 19;
constexpr std::chrono::seconds kMostSeconds{300};
constexpr size_t kMostWishes = 32;

std::string startOf(int64_t id) { return "sample-" + std::to_string(id) + "-"; }

/// Changes when the template is installed again, or its author saves its file.
std::string stateOf(const BookedTemplate& booked) {
    struct stat info {};
    ::stat((booked.folder / (booked.name() + ".plist")).c_str(), &info);
    return booked.folder.string() + " " + std::to_string(info.st_ino) + " " +
           std::to_string(info.st_mtim.tv_sec) + " " + std::to_string(info.st_mtim.tv_nsec);
}

int evenHeight(const Value& told) {
    const double width = std::max(told["width"].doubleValue(), 1.0);
    return std::clamp(2 * static_cast<int>(told["height"].doubleValue() * kWidth / width / 2), 16,
                      4 * kWidth);
}

}  // namespace

std::string SampleVideos::fileOf(const BookedTemplate& booked) const {
    return startOf(booked.id) + platform::textDigest(stateOf(booked)).substr(0, 16) + ".mp4";
}

fs::path SampleVideos::makingOf(const std::string& file) const {
    return parts_.folders.cache / ("new-" + file);
}

std::vector<std::string> SampleVideos::wordsOf(const BookedTemplate& booked) const {
    const fs::path inputs = booked.folder / "sample" / "inputs.json";
    std::vector<std::string> words = {
        "make",   booked.folder.string(),
        "--size", std::to_string(kWidth) + "x" + std::to_string(evenHeight(booked.told)),
        "-o",     makingOf(fileOf(booked)).string()};
    if (platform::isFile(inputs)) words.insert(words.end(), {"--media", inputs.string()});
    return words;
}

void SampleVideos::find(const BookedTemplate& booked, std::function<bool()> isWanted, Ready ready) {
    const std::string file = fileOf(booked);
    if (platform::isFile(parts_.folders.cache / file)) return ready(file);
    if (isStopped_ || failed_.count(file) > 0 || wishes_.size() >= kMostWishes) return ready({});
    wishes_.push_back({file, wordsOf(booked), std::move(isWanted), std::move(ready)});
    next();
}

void SampleVideos::next() {
    std::erase_if(wishes_, [](const Wish& wish) { return !wish.isWanted(); });
    if (run_ || wishes_.empty() || isStopped_) return;
    const std::string file = wishes_.front().file;
    ChildProgram::Spec run = programRun(parts_.settings, wishes_.front().words);
    run.niceness = kLastPlace;
    run.most = kMostSeconds;
    run_ = std::make_unique<ChildProgram>(
        parts_.queue, std::move(run), [](const Value&) {},
        [this, file](const ChildProgram::End& end) {
            const auto ended = std::move(run_);
            made(file, end.exitCode == 0);
            next();
        });
}

void SampleVideos::made(const std::string& file, bool isWell) {
    std::error_code failure;
    if (isWell) {
        // What an older state of the template looked like is of no use.
        const std::string start = file.substr(0, file.rfind('-') + 1);
        for (const auto& entry : fs::directory_iterator(parts_.folders.cache, failure))
            if (std::error_code ignored; entry.path().filename().string().starts_with(start))
                fs::remove(entry.path(), ignored);
        fs::rename(makingOf(file), parts_.folders.cache / file, failure);
    } else if (!isStopped_) {
        failed_.insert(file);
    }
    const bool isThere = isWell && !failure;
    std::vector<Ready> waiting;
    std::erase_if(wishes_, [&](Wish& wish) {
        if (wish.file != file) return false;
        waiting.push_back(std::move(wish.ready));
        return true;
    });
    for (const Ready& ready : waiting) ready(isThere ? file : "");
}

void SampleVideos::stop() {
    isStopped_ = true;
    if (run_) run_->cancel();
    wishes_.clear();
}

}  // namespace multiscene::studio
