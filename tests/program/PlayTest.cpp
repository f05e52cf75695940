// The window of "play", on a screen of the test's own.
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

#include "tests/program/ProgramTest.h"

namespace multiscene::test {
namespace {

constexpr int width = 192, height = 288, barHeight = 26;
constexpr int frames = 6;
constexpr uint32_t colors[frames] = {0xe02020, 0x20c040, 0x3050e0, 0xe0d020, 0xc020c0, 0x20d0d0};

std::string hex(uint32_t rgb) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06x", rgb);
    return text;
}

/// A screen without a window manager, just as large as the window.
class Screen {
  public:
    Screen() : name_(":" + std::to_string(1000 + ::getpid())) {
        const std::string size = std::to_string(width) + "x" + std::to_string(height + barHeight) + "x24";
        // It stays when the last window goes, and tells when it is there.
        server_ = std::make_unique<Process>(std::vector<std::string>{
            "Xvfb", name_, "-displayfd", "1", "-noreset", "-screen", "0", size, "-nolisten", "tcp"});
        EXPECT_TRUE(server_->waitForOutput("\n"));
        ::setenv("DISPLAY", name_.c_str(), 1);
        ::setenv("SDL_VIDEODRIVER", "x11", 1);
        ::setenv("SDL_AUDIODRIVER", "disk", 1);
        ::setenv("SDL_DISKAUDIOFILE", "/dev/null", 1);
    }
    void end() { server_->signal(SIGKILL); }

    /// The picture on it, three bytes a pixel; empty when there is none.
    static std::string grabbed(const TemporaryFolder& folder) {
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        const std::string file = folder.file("screen.rgb");
        run({"ffmpeg", "-v", "error", "-y", "-f", "x11grab", "-draw_mouse", "0", "-video_size", size, "-i",
             std::getenv("DISPLAY"), "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgb24", file});
        return contentOf(file);
    }

  private:
    std::string name_;
    std::unique_ptr<Process> server_;
};

std::string pixelsOfPng(const std::string& png, const std::string& raw) {
    run({"ffmpeg", "-v", "error", "-y", "-i", png, "-f", "rawvideo", "-pix_fmt", "rgb24", raw});
    return contentOf(raw);
}

/// The largest difference of two pictures; 256 when their sizes differ.
int differenceOf(const std::string& a, const std::string& b) {
    if (a.size() != b.size() || a.empty()) return 256;
    int largest = 0;
    for (size_t at = 0; at < a.size(); ++at)
        largest = std::max(largest, std::abs(static_cast<uint8_t>(a[at]) - static_cast<uint8_t>(b[at])));
    return largest;
}

class PlayTest : public ProgramTest {
  protected:
    PlayTest() {
        SmallTemplate small;
        small.nodes.clear();
        for (int frame = 0; frame < frames; ++frame) small.nodes.push_back(slide(frame));
        small.description.erase("userInputArray");
        small.more = [](const fs::path& path) {
            for (int frame = 0; frame < frames; ++frame) writePicture(pictureOf(path, frame), colors[frame]);
            writeSound(path / "bg-audio.mp3", 2);
        };
        template_ = small.write(folder.path());
    }

    static Value slide(int frame) {
        const std::string name = "slide" + std::to_string(frame);
        Value::Dictionary node = quad(name, "$(currentScenePlistROOT)/" + name + ".png");
        node["FpsInfo"] = Value::Dictionary{{"startFps", frame}, {"endFps", frame}};
        return node;
    }
    static fs::path pictureOf(const fs::path& path, int frame) {
        return path / ("slide" + std::to_string(frame) + ".png");
    }

    void play(std::vector<std::string> more = {}) {
        std::vector<std::string> words = command({"play", template_.string(), "--size", "192x288"});
        words.insert(words.end(), more.begin(), more.end());
        words.insert(words.begin(), {"env", "-C", folder.path().string()});
        program_ = std::make_unique<Process>(words);
    }

    /// Waits for a colour in the middle of the screen; false after a minute.
    bool isSeen(uint32_t rgb, int x = width / 2, int y = height / 2) const {
        std::string pixel;
        for (int turn = 0; turn < 300; ++turn) {
            const std::string picture = Screen::grabbed(folder);
            const size_t at = (static_cast<size_t>(y) * width + static_cast<size_t>(x)) * 3;
            if (picture.size() > at + 2) pixel = picture.substr(at, 3);
            const auto channel = [&](size_t index) { return static_cast<uint8_t>(pixel[index]); };
            const std::string shown =
                pixel.empty() ? "" : hex(channel(0) << 16U | channel(1) << 8U | channel(2));
            if (shown == hex(rgb)) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    }
    bool isSeenFrame(int frame) const { return isSeen(colors[frame]); }

    /// Without a window manager nobody gives the window the keyboard back once it was hidden.
    static void act(std::vector<std::string> words) {
        run({"xdotool", "search", "--sync", "--onlyvisible", "--name", "^small$", "windowfocus", "--sync"});
        words.insert(words.begin(), "xdotool");
        const Result result = run(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
    }
    static void key(const std::string& name) { act({"key", name}); }
    static void window(std::vector<std::string> words) {
        words.insert(words.begin(), {"xdotool", "search", "--name", "^small$"});
        run(words);
    }

    Screen screen_;
    fs::path template_;
    std::unique_ptr<Process> program_;
};

TEST_F(PlayTest, ShowsWhatFramesWritesAndObeysKeysAndMouse) {
    ASSERT_EQ(
        multiscene({"frames", template_.string(), "--size", "192x288", "-o", folder.file("frames")}).exitCode,
        0);
    play();
    EXPECT_TRUE(isSeenFrame(5)) << "it plays to its end by itself";
    key("Left");  // it may not have stopped yet
    const struct {
        std::vector<std::string> act;
        int frame;
    } steps[] = {{{"key", "Home"}, 0},
                 {{"key", "Right"}, 1},
                 {{"key", "Up"}, 5},
                 {{"key", "Left"}, 4},
                 {{"key", "shift+Left"}, 0},
                 {{"mousemove", "115", "300", "click", "1"}, 3},
                 {{"mousemove", "40", "300", "mousedown", "1", "mousemove", "80", "300", "mouseup", "1"}, 2},
                 {{"key", "End"}, 5}};
    for (const auto& step : steps) {
        act(step.act);
        EXPECT_TRUE(isSeenFrame(step.frame)) << ::testing::PrintToString(step.act);
        const std::string png = folder.file("frames/frame-00000" + std::to_string(step.frame) + ".png");
        EXPECT_LE(differenceOf(Screen::grabbed(folder), pixelsOfPng(png, folder.file("exported.rgb"))), 3);
    }
    key("s");
    key("Home");
    EXPECT_TRUE(isSeenFrame(0));
    EXPECT_EQ(differenceOf(pixelsOfPng(folder.file("small-000005.png"), folder.file("saved.rgb")),
                           pixelsOfPng(folder.file("frames/frame-000005.png"), folder.file("exported.rgb"))),
              0);
    // Nothing of this may hold it up.
    for (int turn = 0; turn < 6; ++turn) {
        const std::string size = std::to_string(200 + 37 * turn % 100);
        window({"windowsize", size, size, "windowunmap", "windowmap", "--sync"});
        key(turn % 2 ? "Home" : "space");
    }
    window({"windowsize", "192", "314", "windowmove", "0", "0"});
    key("Left");
    key("Home");
    EXPECT_TRUE(isSeenFrame(0));
    key("q");
    const Result result = program_->finish();
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_THAT(leftBehind(), ::testing::IsEmpty());
}

TEST_F(PlayTest, FollowsTheFilesOfItsTemplate) {
    play({"--watch"});
    ASSERT_TRUE(isSeenFrame(5));
    key("Left");
    key("Home");
    key("Right");
    ASSERT_TRUE(isSeenFrame(1));
    writePicture(pictureOf(template_, 1), 0x808080);
    EXPECT_TRUE(isSeen(0x808080)) << "the same frame, anew";
    const std::string scene = contentOf(template_ / "scene.plist");
    std::ofstream(template_ / "scene.plist") << scene.substr(0, scene.size() / 2);
    EXPECT_TRUE(isSeen(0xff6b6b, 2, height - 4)) << "what is wrong, below the last good picture";
    writePicture(pictureOf(template_, 1), 0x00ff00);
    std::ofstream(template_ / "scene.plist") << scene;
    EXPECT_TRUE(isSeen(0x00ff00));
    fs::rename(template_, folder.path() / "away");
    fs::rename(folder.path() / "away", template_);
    key("Home");
    EXPECT_TRUE(isSeenFrame(0));
    fs::remove_all(template_);
    EXPECT_TRUE(isSeen(0xff6b6b, 2, height - 4)) << "a template that is gone";
    key("q");
    EXPECT_EQ(program_->finish().exitCode, 0);
}

constexpr int rate = 44100, soundFrames = 30, framesPerSecond = 10;
/// Of the time line: where frame `frame` is seen first, as in the exported film.
constexpr int64_t sampleOf(int frame) { return int64_t{frame + 1} * rate / framesPerSecond; }

/// The left channel of interleaved stereo; without what a device plays that is given nothing.
std::vector<float> soundIn(const std::string& bytes) {
    constexpr size_t leastSilence = 64;
    std::vector<float> stereo(bytes.size() / sizeof(float)), sound;
    if (!stereo.empty()) std::memcpy(stereo.data(), bytes.data(), stereo.size() * sizeof(float));
    size_t silent = 0;
    for (size_t at = 0; at + 1 < stereo.size(); at += 2) {
        sound.push_back(stereo[at]);
        silent = stereo[at] == 0 && stereo[at + 1] == 0 ? silent + 1 : 0;
        if (silent == leastSilence) sound.resize(sound.size() - leastSilence);
        if (silent > leastSilence) sound.pop_back();
    }
    return sound;
}

struct Likeness {
    double correlation = 0, level = 0;  ///< level: times that of the piece
    int64_t late = 0;                   ///< samples
};

/// How a piece of `wanted` from `from` on is found in `heard` near `at`.
Likeness likeness(const std::vector<float>& wanted, int64_t from, const std::vector<float>& heard,
                  int64_t at) {
    constexpr int64_t length = 4096, most = rate / 20;
    const auto product = [&](const float* a, const float* b) {
        double sum = 0;
        for (int64_t i = 0; i < length; ++i) sum += double{a[i]} * double{b[i]};
        return sum;
    };
    Likeness best;
    const float* const piece = wanted.data() + from;
    const double energy = product(piece, piece);
    for (int64_t late = -most; late <= most; ++late) {
        if (at + late < 0 || at + late + length > static_cast<int64_t>(heard.size())) continue;
        const float* const there = heard.data() + at + late;
        const double others = product(there, there),
                     correlation = product(piece, there) / std::sqrt(energy * others);
        if (correlation > best.correlation) best = {correlation, std::sqrt(others / energy), late};
    }
    return best;
}

TEST_F(PlayTest, SoundsAsTheFilmThatMakeWrites) {
    const auto noise = [](const fs::path& file, const char* seed, const char* seconds) {
        run({"ffmpeg", "-v", "error", "-f", "lavfi", "-i",
             std::string("anoisesrc=a=0.3:r=44100:seed=") + seed + ":d=" + seconds + ",lowpass=f=6000",
             file});
    };
    SmallTemplate small;
    small.nodes = {quad("red", "$(currentScenePlistROOT)/red.png")};
    small.nodes[0] = small.nodes[0].with(
        "ComponentsInfo",
        Value::Array{Value::Dictionary{{"type", "QVObject3DSoundSourceComponent"},
                                       {"startFps", 12},
                                       {"endFps", 18},
                                       {"audioFilePath", "$(currentScenePlistROOT)/effect.wav"},
                                       {"audioKey", "effect"},
                                       {"audioVolume", 0.7}}});
    small.description.erase("userInputArray");
    small.clock = clockOf(soundFrames);
    small.record["fpsLength"] = soundFrames;
    small.more = [&](const fs::path& path) {
        noise(path / "music.wav", "1", "4");
        fs::rename(path / "music.wav", path / "bg-audio.mp3");
        noise(path / "effect.wav", "2", "0.6");
    };
    template_ = small.write(folder.path());
    const std::string film = folder.file("film.mp4"), recorded = folder.file("recorded.raw");
    ASSERT_EQ(multiscene({"make", template_.string(), "-o", film}).exitCode, 0);
    const std::vector<float> exported = soundIn(
        run({"ffmpeg", "-v", "error", "-i", film, "-vn", "-f", "f32le", "-ac", "2", "-ar", "44100", "-"})
            .output);

    const auto isHeard = [&](int64_t samples) {
        constexpr int64_t fade = rate / 100;  // may end in silence
        for (int turn = 0; turn < 1200; ++turn) {
            if (static_cast<int64_t>(soundIn(contentOf(recorded)).size()) > samples - fade) return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
        return false;
    };
    const int64_t whole = sampleOf(soundFrames);
    ::setenv("SDL_DISKAUDIOFILE", recorded.c_str(), 1);
    play();
    ASSERT_TRUE(isHeard(whole));
    key("Left");
    key("Home");
    key("Up");
    key("space");
    ASSERT_TRUE(isHeard(2 * whole - sampleOf(10))) << "again from frame 10 on";
    key("q");
    EXPECT_EQ(program_->finish().exitCode, 0);

    const std::vector<float> heard = soundIn(contentOf(recorded));
    const struct {
        const char* what;
        int64_t wanted, heard;
    } places[] = {{"music", rate / 2, rate / 2},
                  {"effect over music that gives way", sampleOf(14), sampleOf(14)},
                  {"music again", sampleOf(24), sampleOf(24)},
                  {"music after a leap", sampleOf(10) + rate / 20, whole + rate / 20},
                  {"effect after it", sampleOf(14), whole + sampleOf(14) - sampleOf(10)}};
    for (const auto& place : places) {
        const Likeness found = likeness(exported, place.wanted, heard, place.heard);
        EXPECT_GT(found.correlation, 0.9) << place.what;
        EXPECT_NEAR(found.level, 1, 0.1) << place.what;
        EXPECT_LE(std::abs(found.late), rate / 50) << place.what;
    }
}

TEST_F(PlayTest, EndsWithAClearLine) {
    play();
    ASSERT_TRUE(isSeenFrame(5));
    program_->signal(SIGTERM);
    EXPECT_EQ(program_->finish().exitCode, 130);

    play();
    ASSERT_TRUE(isSeenFrame(5));
    fs::rename(template_, folder.path() / "away");
    key("Home");
    Result result = program_->finish();
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.errors, ::testing::HasSubstr("is no longer there"));
    fs::rename(folder.path() / "away", template_);

    ::setenv("SDL_AUDIODRIVER", "none-such", 1);
    play();
    ASSERT_TRUE(isSeenFrame(5)) << "without a sound device";
    screen_.end();
    result = program_->finish();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.errors, ::testing::HasSubstr("note: no sound"));
    EXPECT_THAT(result.errors, ::testing::HasSubstr("the window is gone"));

    play();
    result = program_->finish();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.errorLines().size(), 1U) << result.errors;
    EXPECT_THAT(result.errors, ::testing::HasSubstr("no window can be opened"));

    fs::remove(template_ / "scene.plist");
    result = multiscene({"play", template_.string()});
    EXPECT_NE(result.exitCode, 0);
    EXPECT_THAT(leftBehind(), ::testing::IsEmpty());
}

}  // namespace
}  // namespace multiscene::test
