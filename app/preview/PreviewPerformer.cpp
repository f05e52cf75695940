#include "app/preview/PreviewPerformer.h"

#include <sys/socket.h>

#include <algorithm>
#include <vector>

#include "app/preview/PreviewTalk.h"
#include "platform/base/Activity.h"
#include "platform/base/Clock.h"

namespace multiscene {

using platform::DispatchQueue;
using platform::Error;
using platform::Message;

namespace {

constexpr double kSoundPatience = 2;  // seconds that are waited for a score in all; then what is known sounds
constexpr double kSignInterval = 1;   // seconds: who waits for the window is alive
constexpr size_t kMostText = 16 * 1024;  // bytes of what is wrong

/// Keeps what there is to say about a template.
class Finder : public JobObserver {
  public:
    explicit Finder(JobObserver& other) : other_(other) {}

    void jobFinding(const Finding& finding) override { add(describe(finding)); }
    void jobNote(const std::string& text) override {
        add("note: " + text);
        other_.jobNote(text);
    }
    std::string text() const { return text_.substr(0, kMostText); }

  private:
    void add(const std::string& line) { text_ += (text_.empty() ? "" : "\n") + line; }

    JobObserver& other_;
    std::string text_;
};

std::string millisecondsOf(const StageTime& now, const StageTime& before) {
    return platform::fieldOf((now.wallSeconds - before.wallSeconds) * 1000);
}

}  // namespace

PreviewPerformer::PreviewPerformer(platform::Channel& window, const RenderRequest& request, bool isWatching,
                                   JobObserver& observer, std::stop_token stop)
    : window_(window),
      request_(request),
      isWatching_(isWatching),
      observer_(observer),
      stop_(std::move(stop)),
      listener_([this] { listen(); }) {}

PreviewPerformer::~PreviewPerformer() {
    ::shutdown(window_.descriptor(), SHUT_RDWR);  // ends the listening
    listener_.join();
    const std::lock_guard lock(mutex_);
    for (const auto* sounding : {&sounding_, &coming_})
        if (*sounding) (*sounding)->score->cancel();
}

// What the window says

void PreviewPerformer::listen() {
    try {
        while (const auto message = window_.receive(true)) take(*message);
    } catch (const Error&) {
    }
    {
        const std::lock_guard lock(mutex_);
        isClosed_ = true;
    }
    DispatchQueue::main().async([] {});
}

void PreviewPerformer::take(const Message& message) {
    const std::string& verb = message.field(0);
    if (verb == previewTalk::kSound) {
        const int64_t from = std::max<int64_t>(message.integer(1), 0);
        const int64_t count = std::clamp<int64_t>(message.integer(2), 0, previewTalk::kMostSoundFrames);
        return sound_.async([this, from, count] { giveSound(from, count); });
    }
    {
        const std::lock_guard lock(mutex_);
        if (verb == previewTalk::kPicture)
            asked_ = PictureRequest{
                message.integer(1), std::max<int64_t>(message.integer(2), 0),
                static_cast<int>(std::clamp<int64_t>(message.integer(3), 0, previewTalk::kSlots - 1))};
        isOpenAsked_ = isOpenAsked_ || verb == previewTalk::kOpen;
        isClosed_ = isClosed_ || verb == previewTalk::kClose;
    }
    DispatchQueue::main().async([] {});
}

// Work

/// Asked about twenty times a second.
bool PreviewPerformer::hasOtherWork() {
    if (const double now = platform::monotonicSeconds(); now - signedAt_ > kSignInterval) {
        signedAt_ = now;
        platform::activity::sign();
    }
    const std::lock_guard lock(mutex_);
    return isClosed_ || isOpenAsked_ || asked_ || stop_.stop_requested();
}

void PreviewPerformer::run() {
    while (true) {
        DispatchQueue::main().pumpUntil([this] { return hasOtherWork(); });
        if (stop_.stop_requested()) throw Error(platform::ErrorKind::Cancelled, "cancelled");
        bool opens = false;
        std::optional<PictureRequest> asked;
        {
            const std::lock_guard lock(mutex_);
            if (isClosed_) return;
            opens = std::exchange(isOpenAsked_, false);
            if (!opens) asked = std::exchange(asked_, std::nullopt);
        }
        if (opens) open();
        if (asked) perform(*asked);
    }
}

void PreviewPerformer::open() {
    Finder finder(observer_);
    try {
        auto player = std::make_unique<HeldPlayer>(request_, finder, stop_);
        const MediaFormat& format = player->format();
        const size_t bytes =
            previewTalk::bytesOfPicture(format.width, format.height) * size_t{previewTalk::kSlots};
        if (!pictures_ || pictures_->size() != bytes)
            pictures_ = std::make_shared<platform::SharedMemory>(bytes);
        player_ = std::move(player);
        told_ = {};
        Message opened =
            Message::make(Message::Kind::Answer,
                          {previewTalk::kOpened, player_->name().substr(0, 200), std::to_string(format.width),
                           std::to_string(format.height), std::to_string(format.framesPerSecond),
                           std::to_string(player_->frames()), finder.text()});
        opened.files.push_back(pictures_->file());
        window_.send(opened);
    } catch (const Error& error) {
        if (!isWatching_ || error.kind() == platform::ErrorKind::Cancelled) throw;
        std::string text = error.what();
        if (!finder.text().empty()) text += "\n" + finder.text();
        window_.send(
            Message::make(Message::Kind::Answer, {previewTalk::kRefused, text.substr(0, kMostText)}));
    }
}

void PreviewPerformer::perform(const PictureRequest& request) {
    if (!player_) return tellShown(request, false, 0);
    const double start = platform::monotonicSeconds();
    const MediaFormat& format = player_->format();
    const platform::Canvas picture{
        .pixels = pictures_->data() + previewTalk::bytesOfPicture(format.width, format.height) *
                                          static_cast<size_t>(request.slot),
        .stride = ptrdiff_t{format.width} * 4,
        .width = format.width,
        .height = format.height};
    try {
        const auto outcome = player_->show(request.frame, picture, [this] { return hasOtherWork(); });
        tellShown(request, outcome == HeldPlayer::Outcome::Shown,
                  (platform::monotonicSeconds() - start) * 1000);
        startSound();
    } catch (const Error& error) {
        if (!isWatching_) throw;
        player_.reset();
        tellShown(request, false, 0);
        window_.send(Message::make(Message::Kind::Answer, {previewTalk::kRefused, error.what()}));
    }
}

void PreviewPerformer::tellShown(const PictureRequest& request, bool isShown, double milliseconds) {
    const FrameStatistics now = player_ ? player_->statistics() : FrameStatistics();
    window_.send(
        Message::make(Message::Kind::Answer,
                      {previewTalk::kShown, std::to_string(request.serial), std::to_string(request.frame),
                       isShown ? "1" : "0", std::to_string(player_ ? player_->frames() : 0),
                       platform::fieldOf(milliseconds), millisecondsOf(now.decode, told_.decode),
                       millisecondsOf(now.update, told_.update), millisecondsOf(now.draw, told_.draw),
                       millisecondsOf(now.paint, told_.paint)}));
    told_ = now;
}

// Sound

/// Only once a picture is there: finding out what sounds takes processor time from it.
void PreviewPerformer::startSound() {
    {
        const std::lock_guard lock(mutex_);
        std::optional<Sounding>& latest = coming_ ? coming_ : sounding_;
        if (latest && latest->player == player_->sound()) return;
        coming_ = Sounding{player_->sound(), player_->score(), player_->format().framesPerSecond};
        if (!sounding_) std::swap(sounding_, coming_);
    }
    sound_.async([score = player_->score()] { score->start(); });
}

std::optional<PreviewPerformer::Sounding> PreviewPerformer::soundingNow() {
    const std::lock_guard lock(mutex_);
    if (coming_ && coming_->score->isComplete()) sounding_ = std::exchange(coming_, std::nullopt);
    return sounding_;
}

/// On a machine that is too busy to find out in time what sounds, late effects are better than gaps.
void PreviewPerformer::waitFor(SoundScore& score, int64_t frame) {
    if (awaited_ != &score) {
        awaited_ = &score;
        patience_ = kSoundPatience;
    }
    const double start = platform::monotonicSeconds();
    if (patience_ > 0) score.waitUntilKnown(frame, patience_);
    patience_ -= platform::monotonicSeconds() - start;
}

/// Always answers, with silence where nothing is known.
void PreviewPerformer::giveSound(int64_t from, int64_t count) {
    std::vector<float> samples(static_cast<size_t>(count) * platform::kAudioChannels);
    if (const auto sounding = soundingNow()) {
        const int64_t lastFrame = (from + count) * sounding->framesPerSecond / platform::kAudioSampleRate + 1;
        sounding->score->start();
        waitFor(*sounding->score, lastFrame);
        try {
            sounding->player->seek(from);
            sounding->player->read(samples.data(), count);
        } catch (const Error&) {
            // The run that is seen tells what is wrong with a file.
        }
    }
    window_.send(Message::make(
        Message::Kind::Answer,
        {previewTalk::kHeard, std::to_string(from),
         std::string(reinterpret_cast<const char*>(samples.data()), samples.size() * sizeof(float))}));
}

}  // namespace multiscene
