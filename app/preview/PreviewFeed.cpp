#include "app/preview/PreviewFeed.h"

#include <sys/socket.h>

#include <cstring>

#include "app/Model/MediaFormat.h"
#include "app/preview/PreviewTalk.h"
#include "platform/audio/AudioFile.h"

namespace multiscene {

using platform::Message;

PreviewFeed::PreviewFeed(platform::FileHandle connection, SoundListener listener)
    : channel_(std::move(connection)), listener_(std::move(listener)), thread_([this] { listen(); }) {}

PreviewFeed::~PreviewFeed() {
    ::shutdown(channel_.descriptor(), SHUT_RDWR);  // ends the listening
    thread_.join();
}

// What is asked for

void PreviewFeed::askPicture(int64_t frame, int slot) {
    asked_[++serial_] = slot;
    channel_.send(Message::make(Message::Kind::Request, {previewTalk::kPicture, std::to_string(serial_),
                                                         std::to_string(frame), std::to_string(slot)}));
}

void PreviewFeed::askSound(int64_t from, int64_t frames) {
    channel_.send(Message::make(Message::Kind::Request,
                                {previewTalk::kSound, std::to_string(from), std::to_string(frames)}));
}

void PreviewFeed::askOpen() { channel_.send(Message::make(Message::Kind::Request, {previewTalk::kOpen})); }

void PreviewFeed::close() { channel_.send(Message::make(Message::Kind::Request, {previewTalk::kClose})); }

bool PreviewFeed::isInUse(int slot) const {
    for (const auto& [serial, used] : asked_)
        if (used == slot) return true;
    return false;
}

PreviewFeed::News PreviewFeed::take() {
    News news;
    std::deque<Drawn> drawn;
    {
        const std::lock_guard lock(mutex_);
        const bool isGone = news_.isGone;
        news = std::exchange(news_, {});
        news.isGone = news_.isGone = isGone;
        drawn.swap(drawn_);
    }
    for (Drawn& each : drawn) {
        const auto slot = asked_.find(each.serial);
        if (slot == asked_.end()) continue;
        each.picture.slot = slot->second;
        // A worker answers in order: what it was asked before, it has dropped.
        asked_.erase(asked_.begin(), std::next(slot));
        if (!each.isShown || !each.picture.memory || each.serial <= dropped_) continue;
        each.picture.pixels.pixels =
            each.picture.memory->data() +
            previewTalk::bytesOfPicture(each.picture.pixels.width, each.picture.pixels.height) *
                static_cast<size_t>(each.picture.slot);
        news.picture = std::move(each.picture);
    }
    return news;
}

// What the worker says, on the listening thread

void PreviewFeed::listen() {
    try {
        while (auto message = channel_.receive(true)) hear(*message);
    } catch (const platform::Error&) {
        // Nonsense: the worker is taken for gone.
    }
    const std::lock_guard lock(mutex_);
    news_.isGone = true;
}

void PreviewFeed::hear(Message& message) {
    const std::string& verb = message.field(0);
    if (verb == previewTalk::kOpened) return hearOpened(message);
    if (verb == previewTalk::kShown) return hearShown(message);
    if (verb == previewTalk::kHeard) return hearSound(message);
    if (verb != previewTalk::kRefused) return;
    const std::lock_guard lock(mutex_);
    news_.refused = message.field(1);
}

void PreviewFeed::hearOpened(const Message& message) {
    const int64_t width = message.integer(2), height = message.integer(3), rate = message.integer(4);
    constexpr int64_t highestRate = 1000;
    if (message.files.empty() || width < 1 || height < 1 || width > kLongestSide || height > kLongestSide ||
        rate < 1 || rate > highestRate)
        throw platform::Error(platform::ErrorKind::Failed, "the worker says nonsense");
    PreviewVideo video{.name = message.field(1),
                       .findings = message.field(6),
                       .width = static_cast<int>(width),
                       .height = static_cast<int>(height),
                       .framesPerSecond = static_cast<int>(rate),
                       .frames = message.integer(5)};
    const size_t bytes = previewTalk::bytesOfPicture(video.width, video.height) * size_t{previewTalk::kSlots};
    auto memory = std::make_shared<platform::SharedMemory>(message.files.front(), bytes);
    const std::lock_guard lock(mutex_);
    memory_ = std::move(memory);
    width_ = video.width;
    height_ = video.height;
    news_.refused.reset();
    news_.opened = std::move(video);
    drawn_.clear();  // of what was open before
}

void PreviewFeed::hearShown(const Message& message) {
    const std::lock_guard lock(mutex_);
    Drawn drawn{.serial = message.integer(1), .isShown = message.integer(3) == 1, .picture = {}};
    PreviewPicture& picture = drawn.picture;
    picture.frame = message.integer(2);
    picture.pixels = {.pixels = nullptr, .stride = ptrdiff_t{width_} * 4, .width = width_, .height = height_};
    picture.memory = memory_;
    picture.milliseconds = message.number(5);
    picture.decode = message.number(6);
    picture.update = message.number(7);
    picture.draw = message.number(8);
    picture.paint = message.number(9);
    drawn_.push_back(std::move(drawn));
    news_.frames = message.integer(4);
}

void PreviewFeed::hearSound(const Message& message) {
    constexpr size_t frameBytes = sizeof(float) * platform::kAudioChannels;
    std::vector<float> samples(message.field(2).size() / frameBytes * platform::kAudioChannels);
    if (!samples.empty())
        std::memcpy(samples.data(), message.field(2).data(), samples.size() * sizeof(float));
    listener_(message.integer(1), samples.data(),
              static_cast<int64_t>(samples.size()) / platform::kAudioChannels);
}

}  // namespace multiscene
