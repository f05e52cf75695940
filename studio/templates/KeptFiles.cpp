#include "studio/templates/KeptFiles.h"

#include "platform/base/File.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr const char* kMaking = "new-";
constexpr int kLastPlace = 19;
constexpr std::chrono::seconds kMostSeconds{300}, kUntilNextTry{60};
constexpr size_t kMostWishes = 100;

}  // namespace

KeptFiles::KeptFiles(const Parts& parts) : parts_(parts) {
    std::error_code failure, ignored;
    for (const auto& entry : fs::directory_iterator(parts_.folders.cache, failure))
        if (entry.path().filename().string().starts_with(kMaking)) fs::remove(entry.path(), ignored);
}

fs::path KeptFiles::makingOf(const std::string& file) const {
    return parts_.folders.cache / (kMaking + file);
}

bool KeptFiles::hasJustFailed(const std::string& file) {
    std::erase_if(failed_, [](const auto& each) { return Clock::now() - each.second > kUntilNextTry; });
    return failed_.count(file) > 0;
}

void KeptFiles::find(Wish wish) {
    if (platform::isFile(parts_.folders.cache / wish.file)) return wish.ready(wish.file);
    if (isStopped_ || hasJustFailed(wish.file) || wishes_.size() >= kMostWishes) return wish.ready({});
    wishes_.push_back(std::move(wish));
    next();
}

void KeptFiles::next() {
    std::erase_if(wishes_, [](const Wish& wish) { return !wish.isWanted(); });
    if (run_ || wishes_.empty() || isStopped_) return;
    const std::string file = wishes_.front().file;
    std::vector<std::string> words = wishes_.front().words;
    words.insert(words.end(), {"-o", makingOf(file).string()});
    ChildProgram::Spec run = programRun(parts_.settings, std::move(words));
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

void KeptFiles::made(const std::string& file, bool isWell) {
    const bool isThere = isWell && publish(file);
    if (!isThere) failed_.emplace(file, Clock::now());
    std::vector<Wish> waiting;
    std::erase_if(wishes_, [&](Wish& wish) {
        if (wish.file != file) return false;
        waiting.push_back(std::move(wish));
        return true;
    });
    for (const Wish& wish : waiting) wish.ready(isThere ? file : "");
}

bool KeptFiles::publish(const std::string& file) const {
    const std::string start = file.substr(0, file.rfind('-') + 1);
    std::error_code failure, ignored;
    for (const auto& entry : fs::directory_iterator(parts_.folders.cache, ignored))
        if (entry.path().filename().string().starts_with(start)) fs::remove(entry.path(), ignored);
    fs::rename(makingOf(file), parts_.folders.cache / file, failure);
    return !failure;
}

void KeptFiles::stop() {
    isStopped_ = true;
    if (run_) run_->cancel();
    wishes_.clear();
}

}  // namespace multiscene::studio
