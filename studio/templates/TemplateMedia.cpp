#include "studio/templates/TemplateMedia.h"

#include <sys/stat.h>

#include <algorithm>

#include "platform/base/File.h"
#include "platform/crypto/Secret.h"
#include "studio/templates/TemplateFiles.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;
using platform::http::Answer;

namespace {

constexpr const char* kOwnVideo = "preview.mp4";
constexpr int kWidth = 360;

/// `shows` changes when what the file shows does.
std::string fileOf(const char* kind, const BookedTemplate& booked, const std::string& shows,
                   const char* ending) {
    return kind + std::to_string(booked.id) + "-" + platform::textDigest(shows).substr(0, 16) + ending;
}

/// Changes when the template is installed again, or its author saves its file.
std::string stateOf(const BookedTemplate& booked) {
    struct stat info {};
    ::stat((booked.folder / (booked.name() + ".plist")).c_str(), &info);
    return booked.folder.string() + " " + std::to_string(info.st_ino) + " " +
           std::to_string(info.st_mtim.tv_sec) + " " + std::to_string(info.st_mtim.tv_nsec);
}

int evenHeight(const Value& told) {
    const double width = std::max(told["width"].doubleValue(), 1.0);
    const double half = told["height"].doubleValue() * kWidth / width / 2;
    return 2 * static_cast<int>(std::clamp(half, 8.0, 2.0 * kWidth));
}

std::vector<std::string> wordsOfSample(const BookedTemplate& booked) {
    const fs::path inputs = booked.folder / "sample" / "inputs.json";
    std::vector<std::string> words = {"make", booked.folder.string(), "--size",
                                      std::to_string(kWidth) + "x" + std::to_string(evenHeight(booked.told))};
    if (platform::isFile(inputs)) words.insert(words.end(), {"--media", inputs.string()});
    return words;
}

std::vector<std::string> wordsOfFetching(const BookedTemplate& booked, const char* what) {
    return {"templates", "fetch", std::to_string(booked.id), what};
}

/// Also one that leads elsewhere: then there is no other.
bool bringsVideo(const BookedTemplate& booked) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(booked.folder / kOwnVideo, ignored));
}

void answer(const TemplateMedia::Waiting& waiting, const std::function<Answer()>& made) {
    try {
        waiting->answer(made());
    } catch (...) {
        waiting->answer(answerOf(currentProblem()));
    }
}

}  // namespace

bool TemplateMedia::hasPicture(const BookedTemplate& booked) {
    return !booked.told.string(booked.folder.empty() ? "thumbUrl" : "thumbnail").empty();
}

bool TemplateMedia::hasVideo(const BookedTemplate& booked) {
    return !booked.folder.empty() || !booked.told.string("videoPreviewUrl").empty();
}

void TemplateMedia::picture(const BookedTemplate& booked, const Waiting& waiting) {
    if (!hasPicture(booked)) throw notFound("picture of the template");
    if (!booked.folder.empty())
        return waiting->answer(pictureIn(booked.folder, booked.told.string("thumbnail")));
    find(pictures_, fileOf("picture-", booked, booked.told.string("thumbUrl"), ".img"),
         wordsOfFetching(booked, "thumbnail"), waiting);
}

void TemplateMedia::video(const BookedTemplate& booked, const Waiting& waiting) {
    if (!hasVideo(booked)) throw notFound("video of the template");
    if (booked.folder.empty())
        return find(videos_, fileOf("preview-", booked, booked.told.string("videoPreviewUrl"), ".mp4"),
                    wordsOfFetching(booked, "preview"), waiting);
    if (bringsVideo(booked)) return waiting->answer(videoIn(booked.folder, kOwnVideo));
    find(videos_, fileOf("sample-", booked, stateOf(booked), ".mp4"), wordsOfSample(booked), waiting);
}

void TemplateMedia::find(KeptFiles& files, const std::string& file, std::vector<std::string> words,
                         const Waiting& waiting) {
    const bool isVideo = &files == &videos_;
    files.find({file, std::move(words), [waiting] { return !waiting->isGone(); },
                [this, waiting, isVideo](const std::string& made) {
                    answer(waiting, [&] {
                        return isVideo ? videoIn(parts_.folders.cache, made)
                                       : pictureIn(parts_.folders.cache, made);
                    });
                }});
}

void TemplateMedia::stop() {
    pictures_.stop();
    videos_.stop();
}

}  // namespace multiscene::studio
