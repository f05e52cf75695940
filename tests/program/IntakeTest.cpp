// Files that somebody sends: what they are, whatever they are called, and what is made of them.

#include "platform/image/ImageWriter.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

class IntakeTest : public ProgramTest {
  protected:
    /// The line that it says; its exit code goes to `code`.
    Value taken(const std::string& name, int code = 0) {
        output = folder.file("out-" + name);
        const Result result = multiscene({"--json", "intake", folder.file(name), output});
        EXPECT_EQ(result.exitCode, code) << result.errors;
        return result.jsonLines().empty() ? Value() : result.jsonLines().back();
    }
    platform::Bitmap made(const std::string& name) const { return pictureIn(output + "/" + name); }
    bool isMade(const std::string& name) const { return platform::isFile(output + "/" + name); }
    void ffmpeg(std::vector<std::string> words, const std::string& name) const {
        words.insert(words.begin(), {"ffmpeg", "-y", "-v", "error"});
        words.push_back(folder.file(name));
        EXPECT_EQ(run(words).exitCode, 0) << name;
    }

    std::string output;
};

}  // namespace

TEST_F(IntakeTest, KeepsOfAPhotoItsPixelsAndNothingElse) {
    platform::Bitmap lying(5000, 100);  // red left, blue right
    for (size_t i = 0; i < lying.rgba.size(); i += 4) {
        const bool isLeft = i / 4 % 5000 < 2500;
        lying.rgba[i] = isLeft ? 255 : 0;
        lying.rgba[i + 2] = isLeft ? 0 : 255;
        lying.rgba[i + 3] = 255;
    }
    platform::writeJpeg(folder.file("plain.jpg"), lying, 95);
    // As a camera turns it, and where it was.
    std::string bytes = contentOf(folder.file("plain.jpg"));
    const std::string tiff("II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0SECRET-PLACE", 38);
    const size_t length = 2 + 6 + tiff.size();
    const char head[] = {
        '\xff', '\xe1', static_cast<char>(length >> 8), static_cast<char>(length & 255), 'E', 'x', 'i', 'f',
        0,      0};
    bytes.insert(2, tiff).insert(2, head, sizeof head);
    platform::writeFileAtomically(folder.file("photo.mp4"), bytes);
    const Value line = taken("photo.mp4");
    EXPECT_EQ(line.string("event"), "intake");
    EXPECT_EQ(line.string("kind"), "photo") << "the name says nothing";
    EXPECT_EQ(line.string("file"), "photo.jpg");
    EXPECT_EQ(line.integer("width"), 82);
    EXPECT_EQ(line.integer("height"), 4096);
    const platform::Bitmap kept = made("photo.jpg");
    EXPECT_GT(kept.pixel(40, 100)[0], 200) << "upright, its left is above";
    EXPECT_GT(kept.pixel(40, 4000)[2], 200);
    EXPECT_EQ(made("proxy.jpg").height, 1600);
    for (const char* each : {"photo.jpg", "proxy.jpg"})
        EXPECT_EQ(contentOf(output + "/" + each).find("SECRET"), std::string::npos);

    platform::Bitmap glass(20, 10);
    for (size_t i = 3; i < glass.rgba.size(); i += 4) glass.rgba[i] = i < 400 ? 255 : 100;
    platform::writePng(folder.file("glass.png"), glass);
    EXPECT_EQ(taken("glass.png").string("file"), "photo.png");
    EXPECT_EQ(made("photo.png").pixel(3, 9)[3], 100);
    writePicture(folder.path() / "opaque.png", 0x123456, 30, 20);
    EXPECT_EQ(taken("opaque.png").string("file"), "photo.jpg");
}

TEST_F(IntakeTest, KnowsFilmsAndSoundsByTheirContentAndRefusesTheRest) {
    writeVideo(folder.path() / "film.jpg", 12, 10);
    const Value film = taken("film.jpg");
    EXPECT_EQ(film.string("kind"), "video");
    EXPECT_NEAR(film["seconds"].doubleValue(), 1.2, 0.01);
    EXPECT_EQ(film.integer("width"), made("proxy.jpg").width);
    EXPECT_FALSE(film.has("file")) << "it is kept as it is";
    writeSound(folder.path() / "sound.wav", 2);
    ffmpeg({"-i", folder.file("sound.wav")}, "sound.mp3");
    const Value sound = taken("sound.mp3");
    EXPECT_EQ(sound.string("kind"), "sound");
    EXPECT_NEAR(sound["seconds"].doubleValue(), 2, 0.1);
    EXPECT_FALSE(isMade("proxy.jpg"));

    const std::string whole = contentOf(folder.file("film.jpg"));
    platform::writeFileAtomically(folder.file("text.jpg"), "no picture");
    platform::writeFileAtomically(folder.file("empty.png"), "");
    platform::writeFileAtomically(folder.file("cut.mp4"), whole.substr(0, whole.size() / 3));
    platform::writeFileAtomically(folder.file("list.m3u8"), "#EXTM3U\n/etc/passwd\n");
    for (const char* wrong : {"text.jpg", "empty.png", "cut.mp4", "list.m3u8", "missing"}) {
        EXPECT_EQ(taken(wrong, 4).string("event"), "error") << wrong;
        EXPECT_FALSE(isMade("proxy.jpg")) << wrong;
    }
    EXPECT_TRUE(leftBehind().empty());
}

}  // namespace multiscene::test
