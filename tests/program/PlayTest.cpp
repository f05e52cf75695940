// The window of "play", on a screen of the test's own.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "tests/program/ProgramTest.h"

namespace multiscene::test {
namespace {

namespace fs = std::filesystem;
using platform::Value;

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
        server_ = std::make_unique<Process>(
            std::vector<std::string>{"Xvfb", name_, "-screen", "0", size, "-nolisten", "tcp"});
        const fs::path socket = "/tmp/.X11-unix/X" + name_.substr(1);
        while (!fs::exists(socket)) std::this_thread::sleep_for(std::chrono::milliseconds(20));
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

    static void act(std::vector<std::string> words) {
        words.insert(words.begin(), "xdotool");
        run(words);
    }
    static void key(const std::string& name) { act({"key", name}); }

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
        act({"search", "--name", "small", "windowsize", size, size, "windowunmap"});
        key(turn % 2 ? "Home" : "space");
        act({"search", "--name", "small", "windowmap", "windowfocus"});
    }
    act({"search", "--name", "small", "windowsize", "192", "314", "windowmove", "0", "0"});
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

TEST_F(PlayTest, EndsWithAClearLine) {
    play();
    ASSERT_TRUE(isSeenFrame(5));
    program_->signal(SIGTERM);
    EXPECT_EQ(program_->finish().exitCode, 130);

    ::setenv("SDL_AUDIODRIVER", "none-such", 1);
    play();
    ASSERT_TRUE(isSeenFrame(5)) << "without a sound device";
    screen_.end();
    Result result = program_->finish();
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
