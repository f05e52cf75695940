#include "app/preview/PreviewWindow.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "platform/audio/AudioFile.h"
#include "platform/base/Clock.h"
#include "platform/base/Error.h"
#include "platform/image/ImageWriter.h"
#include "videoRenderCore/QVMorrow3DGLVIew.h"

namespace multiscene {

using platform::Error;
using platform::kAudioSampleRate;
using platform::Message;
using platform::WindowEvent;

namespace {

constexpr int kFirstWidth = 640, kFirstHeight = 360;  // points, of a window that has no video yet
constexpr int kLargeStep = 10;
constexpr int kTurn = 8;          // milliseconds
constexpr double kSaid = 2.5;     // seconds
constexpr double kFindings = 6;   // seconds, of what does not keep the template from playing
constexpr double kPatience = 2;   // seconds until playing begins in silence
constexpr double kRedraw = 0.25;  // seconds between numbers that change while time stands
constexpr int64_t kEndless = INT64_MAX / 2;
constexpr uint32_t kRed = 0xff6b6b, kYellow = 0xe8c34d;
constexpr const char* kHelp =
    "space play  \xE2\x86\x90\xE2\x86\x92 step  f screen  i numbers  s save  l loop  m mute";

template <typename... Arguments>
std::string format(const char* pattern, Arguments... arguments) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, arguments...);
    return text;
}

std::string clockText(double seconds) {
    const auto tenths = static_cast<int64_t>(std::max(seconds, 0.0) * 10);
    return format("%lld:%02lld.%lld", static_cast<long long>(tenths / 600),
                  static_cast<long long>(tenths / 10 % 60), static_cast<long long>(tenths % 10));
}

std::string fileNameOf(std::string name, int64_t frame) {
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return letter == '/' || letter < 32; }, '-');
    return (name.empty() ? "preview" : name) + format("-%06lld.png", static_cast<long long>(frame));
}

}  // namespace

PreviewWindow::PreviewWindow(platform::Channel& program, PreviewSettings settings,
                             std::function<void(const std::string&)> note)
    : program_(program), settings_(std::move(settings)), note_(std::move(note)) {
    if (settings_.isWatching) watch_.emplace(settings_.watched);
}

void PreviewWindow::run() {
    while (!isClosed_) {
        hearProgram();
        takeNews();
        followFiles();
        if (window_)
            obeyEvents();
        else
            platform::sleepSeconds(kTurn / 1000.0);
        if (isClosed_) break;
        keepTime();
        if (window_ && isToBeShown()) show();
    }
    if (feed_) feed_->close();
    tell("closed");
}

void PreviewWindow::keepTime() {
    beginWhenReady();
    endOrLoop();
    feedSound();
    if (!video_) return;
    if (pictures_.choose(frameNow(), isPlaying_)) mustShow_ = true;
    if (feed_) pictures_.ask(*feed_, frameNow(), isPlaying_, lastFrame(), video_->framesPerSecond);
}

// What comes in

void PreviewWindow::tell(const std::string& what) {
    program_.send(Message::make(Message::Kind::Answer, {what}));
}

void PreviewWindow::hearProgram() {
    while (auto message = program_.receive()) {
        if (message->field(0) == "worker" && !message->files.empty()) {
            pictures_.forget();
            sound_.forget();
            isFreshWorker_ = true;
            feed_ = std::make_unique<PreviewFeed>(std::move(message->files.front()),
                                                  [this](int64_t from, const float* samples, int64_t frames) {
                                                      sound_.take(from, samples, frames);
                                                  });
        } else if (message->field(0) == "lost") {
            feed_.reset();
            fault_ = message->field(1);
            makeWindow();
        }
        mustShow_ = true;
    }
    if (program_.isClosed()) isClosed_ = true;
}

void PreviewWindow::takeNews() {
    if (!feed_) return;
    PreviewFeed::News news = feed_->take();
    if (news.opened) open(std::move(*news.opened));
    if (news.refused) return refuse(*news.refused);
    if (news.frames) setFrames(*news.frames);
    if (news.picture) pictures_.take(std::move(*news.picture));
    if (!news.isGone) return;
    // The program knows why, and says so.
    feed_.reset();
    if (!settings_.isWatching) isClosed_ = true;
}

/// What was exchanged since a worker was shut in is out of its reach: only a new one knows.
void PreviewWindow::refuse(const std::string& text) {
    if (!isFreshWorker_) return replaceWorker();
    fault_ = text;
    makeWindow();
    mustShow_ = true;
}

void PreviewWindow::replaceWorker() {
    if (feed_) feed_->close();
    feed_.reset();
    tell("again");
}

void PreviewWindow::open(PreviewVideo video) {
    const bool isFirst = !video_;
    video_ = std::move(video);
    isFreshWorker_ = false;
    fault_.clear();
    pictures_.forget();
    setFrames(video_->frames);
    openedAt_ = platform::monotonicSeconds();
    mustShow_ = true;
    if (isFirst) makeWindow();
    window_->setTitle(video_->name);
    if (!isFirst) say("shown anew");
    if (isFirst && !sound_.fault().empty()) {
        note_(sound_.fault() + "; the preview is silent");
        say("no sound");
    }
}

/// How long the video is may turn out only when it was played to its end.
void PreviewWindow::setFrames(int64_t frames) {
    if (!video_) return;
    video_->frames = frames;
    sound_.setEnd(frames > 0 ? positionOf(frames - 1) + kAudioSampleRate / video_->framesPerSecond
                             : kEndless);
    goal_ = std::min(goal_, lastFrame());
}

void PreviewWindow::followFiles() {
    if (!watch_ || !watch_->hasChanged()) return;
    if (feed_ && fault_.empty())
        feed_->askOpen();
    else
        replaceWorker();
}

// Events

void PreviewWindow::obeyEvents() {
    auto event = window_->next(waitingTime());
    while (event && !isClosed_) {
        obey(*event);
        event = window_->next(0);
    }
}

void PreviewWindow::obey(const WindowEvent& event) {
    switch (event.kind) {
        case WindowEvent::Kind::Close:
            isClosed_ = true;
            break;
        case WindowEvent::Kind::Redraw:
            mustShow_ = true;
            break;
        case WindowEvent::Kind::Key:
            obeyKey(event);
            break;
        default:
            obeyMouse(event);
            break;
    }
}

void PreviewWindow::obeyKey(const WindowEvent& event) {
    const int64_t steps = event.hasShift ? kLargeStep : 1;
    mustShow_ = true;
    switch (event.key) {
        case WindowEvent::Key::Space:
            wantsToPlay_ = false;
            if (!isPlaying_ && goal_ >= lastFrame()) seek(0);
            return setPlaying(!isPlaying_);
        case WindowEvent::Key::Left:
            return step(-steps);
        case WindowEvent::Key::Right:
            return step(steps);
        case WindowEvent::Key::Down:
            return step(-kLargeStep);
        case WindowEvent::Key::Up:
            return step(kLargeStep);
        case WindowEvent::Key::Home:
            return seek(0);
        case WindowEvent::Key::End:
            return seek(lastFrame());
        case WindowEvent::Key::Escape:
            if (window_->isFullScreen())
                window_->setFullScreen(false);
            else
                isClosed_ = true;
            return;
        default:
            return obeyLetter(event.letter);
    }
}

void PreviewWindow::obeyLetter(char letter) {
    switch (letter) {
        case 'f':
            return window_->setFullScreen(!window_->isFullScreen());
        case 'i':
            hasOverlay_ = !hasOverlay_;
            return;
        case 'l':
            isLooping_ = !isLooping_;
            return say(isLooping_ ? "again and again" : "once");
        case 'm':
            isMuted_ = !isMuted_;
            sound_.setMuted(isMuted_);
            return say(isMuted_ ? "muted" : "with sound");
        case 's':
            return savePicture();
        case 'q':
            isClosed_ = true;
            return;
        default:
            return;
    }
}

void PreviewWindow::obeyMouse(const WindowEvent& event) {
    using Kind = WindowEvent::Kind;
    const bool isPress = event.kind == Kind::Press;
    if (isPress && event.y >= window_->height() - face_.barHeight()) beginDragging();
    if (!isDragging_) return;
    if (event.kind != Kind::Moved) {
        const double share =
            std::clamp(static_cast<double>(event.x) / std::max(window_->width() - 1, 1), 0.0, 1.0);
        seek(std::llround(share * static_cast<double>(lastFrame())), !isPress);
    }
    if (event.kind == Kind::Release || event.kind == Kind::Moved) endDragging();
}

/// Time stands meanwhile.
void PreviewWindow::beginDragging() {
    isDragging_ = true;
    playsAfterDragging_ = isPlaying_ || wantsToPlay_;
    wantsToPlay_ = false;
    setPlaying(false);
}

void PreviewWindow::endDragging() {
    isDragging_ = false;
    wantsToPlay_ = playsAfterDragging_;
}

void PreviewWindow::step(int64_t frames) {
    const int64_t from = frameNow();
    wantsToPlay_ = false;
    setPlaying(false);
    seek(from + frames, true);
}

/// `isOnTheWay`: there may be more of it at once.
void PreviewWindow::seek(int64_t frame, bool isOnTheWay) {
    const int64_t wanted = std::clamp<int64_t>(frame, 0, lastFrame());
    if (!video_ || (wanted == goal_ && !isPlaying_)) return;
    goal_ = wanted;
    sound_.seek(positionOf(goal_));
    if (isOnTheWay)
        pictures_.wander();
    else
        pictures_.leap();
    mustShow_ = true;
}

void PreviewWindow::setPlaying(bool isPlaying) {
    if (isPlaying == isPlaying_ || !video_) return;
    if (!isPlaying) goal_ = frameNow();
    isPlaying_ = isPlaying;
    sound_.setPlaying(isPlaying);
    mustShow_ = true;
}

/// What is on the screen, as "frames" writes it.
void PreviewWindow::savePicture() {
    if (!pictures_.shown() || !video_) return;
    const PreviewPicture& picture = *pictures_.shown();
    platform::Bitmap bitmap(picture.pixels.width, picture.pixels.height);
    for (size_t pixel = 0; pixel < bitmap.rgba.size(); pixel += 4) {
        const uint8_t* const from = picture.pixels.pixels + pixel;
        const uint8_t rgba[] = {from[2], from[1], from[0], 255};
        std::copy_n(rgba, 4, bitmap.rgba.begin() + static_cast<ptrdiff_t>(pixel));
    }
    const std::string name = fileNameOf(video_->name, picture.frame);
    try {
        platform::writePng(name, bitmap);
        say("saved " + name);
    } catch (const Error& error) {
        say(error.what());
    }
}

// Time. As in the exported film, a frame is seen from (its number + 1) / rate on, and the first from 0.

int64_t PreviewWindow::lastFrame() const {
    return video_ && video_->frames > 0 ? video_->frames - 1 : kEndless;
}

int64_t PreviewWindow::frameAt(int64_t position) const {
    const int64_t frames = position * video_->framesPerSecond / kAudioSampleRate;
    return std::clamp<int64_t>(frames - 1, 0, lastFrame());
}

int64_t PreviewWindow::positionOf(int64_t frame) const {
    const int64_t rate = video_->framesPerSecond;
    return frame <= 0 ? 0 : ((frame + 1) * kAudioSampleRate + rate - 1) / rate;
}

int64_t PreviewWindow::frameNow() { return isPlaying_ && video_ ? frameAt(sound_.position()) : goal_; }

/// Begins to play once the first picture is there, and its sound; then, and after an edit, picture follows
/// sound.
void PreviewWindow::beginWhenReady() {
    if (!wantsToPlay_ || !video_ || !pictures_.isShowing(goal_)) return;
    if (!sound_.isReady() && platform::monotonicSeconds() - openedAt_ < kPatience) return;
    wantsToPlay_ = false;
    setPlaying(true);
}

void PreviewWindow::endOrLoop() {
    if (!isPlaying_ || video_->frames < 1) return;
    const int64_t end = positionOf(lastFrame()) + kAudioSampleRate / video_->framesPerSecond;
    if (sound_.position() < end - 1) return;
    setPlaying(false);
    goal_ = lastFrame();
    if (!isLooping_) return;
    seek(0);
    wantsToPlay_ = true;
}

void PreviewWindow::feedSound() {
    if (!feed_ || !pictures_.shown()) return;
    constexpr int mostAtOnce = 4;
    for (int count = 0; count < mostAtOnce; ++count) {
        const auto [from, frames] = sound_.wanted();
        if (frames == 0) return;
        feed_->askSound(from, frames);
    }
}

// The screen

/// On screens with exactly two pixels a point the window has them all.
std::unique_ptr<platform::Window> PreviewWindow::openWindow(int width, int height) const {
    platform::WindowSettings settings{.title = "multiscene", .width = width, .height = height};
    settings.usesEveryPixel = true;
    auto window = platform::openWindow(settings);
    if (QVMorrow3DGLVIew::pixelScaleFactor(window->scale()) == static_cast<float>(window->scale()))
        return window;
    window.reset();
    settings.usesEveryPixel = false;
    return platform::openWindow(settings);
}

/// A window that had to be opened to say what is wrong takes the video's size when there is one.
void PreviewWindow::makeWindow() {
    if (window_ && !video_) return;
    const PreviewFace points;
    const int width = video_ ? video_->width : kFirstWidth;
    const int height = (video_ ? video_->height : kFirstHeight) + points.barHeight();
    if (window_)
        window_->resize(width, height);
    else
        window_ = openWindow(width, height);
    face_.setScale(window_->scale());
}

int PreviewWindow::waitingTime() const { return mustShow_ ? 0 : kTurn; }

/// Beside pictures, numbers change, and what was said for a moment goes.
bool PreviewWindow::isToBeShown() {
    const double now = platform::monotonicSeconds();
    if (!said_.empty() && now - saidAt_ > kSaid) {
        said_.clear();
        mustShow_ = true;
    }
    return mustShow_ || now - shownAt_ > kRedraw;
}

platform::WindowLayer PreviewWindow::pictureLayer(int width, int height) const {
    const platform::Surface& picture = pictures_.shown()->pixels;
    const double share =
        std::min(static_cast<double>(width) / picture.width, static_cast<double>(height) / picture.height);
    platform::WindowLayer layer{.picture = picture, .version = pictures_.version()};
    layer.width = std::max(static_cast<int>(std::lround(picture.width * share)), 1);
    layer.height = std::max(static_cast<int>(std::lround(picture.height * share)), 1);
    layer.x = (width - layer.width) / 2;
    layer.y = (height - layer.height) / 2;
    return layer;
}

void PreviewWindow::show() {
    const int width = window_->width(), height = window_->height() - face_.barHeight();
    shownAt_ = platform::monotonicSeconds();
    mustShow_ = false;
    std::vector<platform::WindowLayer> layers(4);
    const auto lay = [](platform::WindowLayer& layer, const PreviewPanel& panel, int x, int y) {
        layer = {.picture = panel.surface(), .version = panel.version(), .x = x, .y = y};
        layer.width = panel.width();
        layer.height = panel.height();
    };
    if (pictures_.shown() && height > 0) layers[0] = pictureLayer(width, height);
    const double done =
        video_ && video_->frames > 1 ? static_cast<double>(frameNow()) / static_cast<double>(lastFrame()) : 0;
    lay(layers[1], face_.bar(width, {.done = done, .left = timeText(), .right = stateText()}), 0, height);
    const bool isFault = !fault_.empty();
    const bool saysFindings = hasOverlay_ || shownAt_ - openedAt_ < kFindings;
    const std::string text = isFault ? fault_ : video_ && saysFindings ? video_->findings : "";
    if (!text.empty() && height > 0) {
        const PreviewPanel& panel =
            face_.message(width, isFault ? height : height / 3, isFault ? "not shown yet:" : "",
                          isFault ? kRed : kYellow, text);
        lay(layers[2], panel, 0, height - panel.height());
    }
    if (hasOverlay_) lay(layers[3], face_.overlay(overlayText()), 0, 0);
    window_->show(layers);
}

std::string PreviewWindow::timeText() {
    if (!video_) return "";
    const int64_t frame = frameNow();
    const std::string of = video_->frames > 0 ? format(" / %lld", static_cast<long long>(lastFrame())) : "";
    const auto seconds = static_cast<double>(frame) / video_->framesPerSecond;
    return (isPlaying_ ? "\xE2\x96\xB6 " : "\xE2\x8F\xB8 ") + clockText(seconds) +
           format("   frame %lld", static_cast<long long>(frame)) + of;
}

std::string PreviewWindow::stateText() const {
    if (!said_.empty()) return said_;
    if (!video_) return fault_.empty() ? "reading" : "";
    std::string text;
    if (isMuted_) text += "muted  ";
    if (isLooping_) text += "loop  ";
    return text + kHelp;
}

std::string PreviewWindow::overlayText() {
    if (!video_) return "";
    std::string text =
        format("frame %lld of %lld\n", static_cast<long long>(frameNow()),
               static_cast<long long>(video_->frames)) +
        format("%dx%d, %d frames a second\n", video_->width, video_->height, video_->framesPerSecond) +
        format("shown: %.1f a second, %lld left out\n", pictures_.shownASecond(),
               static_cast<long long>(pictures_.dropped()));
    if (const auto& picture = pictures_.shown())
        text +=
            format("drawn in %.1f ms: decode %.1f, update %.1f, draw %.1f, paint %.1f", picture->milliseconds,
                   picture->decode, picture->update, picture->draw, picture->paint);
    if (!sound_.fault().empty()) text += "\nsilent: " + sound_.fault();
    return text;
}

void PreviewWindow::say(const std::string& text) {
    said_ = text;
    saidAt_ = platform::monotonicSeconds();
    mustShow_ = true;
}

}  // namespace multiscene
