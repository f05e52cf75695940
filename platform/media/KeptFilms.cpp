#include "platform/media/KeptFilms.h"

namespace platform {

namespace {

constexpr size_t kMostFilms = 64;

/// Its planes, and the pixels that may be made of them.
size_t bytesOf(const FilmPicture& picture) {
    const auto pixels = static_cast<size_t>(picture.width()) * static_cast<size_t>(picture.height());
    return pixels * 11 / 2;
}

}  // namespace

void keepDecodedFilms(size_t mostBytes) { keptFilms().setMostBytes(mostBytes); }

// One film

std::optional<KeptFilm::Frame> KeptFilm::at(int64_t index) const {
    const std::lock_guard lock(mutex_);
    if (index >= static_cast<int64_t>(frames_.size())) return std::nullopt;
    return frames_[static_cast<size_t>(index)];
}

bool KeptFilm::endsBefore(int64_t index) const {
    const std::lock_guard lock(mutex_);
    return isWhole_ && index >= static_cast<int64_t>(frames_.size());
}

std::optional<Error> KeptFilm::error() const {
    const std::lock_guard lock(mutex_);
    return error_;
}

bool KeptFilm::isSound() const {
    constexpr size_t goodPart = 30;  // frames
    const std::lock_guard lock(mutex_);
    return frames_.size() >= goodPart && !isDamaged_ && !error_;
}

void KeptFilm::noteDamage() {
    const std::lock_guard lock(mutex_);
    isDamaged_ = true;
}

void KeptFilm::note(int64_t index, const Frame& frame) {
    const std::lock_guard lock(mutex_);
    if (!isWhole_ && index == static_cast<int64_t>(frames_.size())) frames_.push_back(frame);
}

void KeptFilm::noteEnd(const std::optional<Error>& error) {
    const std::lock_guard lock(mutex_);
    isWhole_ = true;
    error_ = error;
}

// All of them

KeptFilms& keptFilms() {
    static KeptFilms films;
    return films;
}

void KeptFilms::setMostBytes(size_t bytes) {
    const std::lock_guard lock(mutex_);
    pictures_.setMostBytes(bytes);
}

std::shared_ptr<KeptFilm> KeptFilms::film(const FileHandle& file, const VideoReaderSettings& settings) {
    const std::lock_guard lock(mutex_);
    const auto stamp = pictures_.mostBytes() > 0 ? FileStamp::of(file) : std::nullopt;
    if (!stamp) return nullptr;
    if (films_.size() >= kMostFilms) films_.clear();
    auto& film = films_[Key{*stamp, settings.shape.width, settings.shape.height, settings.framesPerSecond,
                            settings.firstFrame, settings.premultipliesAlpha}];
    if (!film) film = std::make_shared<KeptFilm>();
    return film;
}

KeptFilms::Picture KeptFilms::picture(const std::shared_ptr<KeptFilm>& film, int64_t number) {
    const std::lock_guard lock(mutex_);
    return pictures_.find({film, number}).value_or(nullptr);
}

void KeptFilms::keep(const std::shared_ptr<KeptFilm>& film, int64_t number, const Picture& picture) {
    const std::lock_guard lock(mutex_);
    pictures_.keep({film, number}, picture, bytesOf(*picture));
}

}  // namespace platform
