#include <fstream>

#include "platform/base/Clock.h"
#include "tests/platform/PngBytes.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

using platform::test::bigEndian, platform::test::png, platform::test::pngChunk;

const std::string rgb16("\x10\x06\x00\x00\x00", 5), rgb8("\x08\x02\x00\x00\x00", 5),
    interlaced("\x08\x06\x00\x00\x01", 5);

/// A gzip that ends in its first block.
std::string cutGzip(size_t bytes) {
    return std::string("\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03\x00\xff\xff\x00\x00", 15) +
           std::string(bytes, 'x');
}

/// A film whose table `name` says this at `offset` instead of what is true.
std::string lying(const fs::path& film, const std::string& name, size_t offset, uint32_t number) {
    std::string bytes = contentOf(film);
    const size_t at = bytes.find(name);
    return at == std::string::npos ? bytes : bytes.replace(at + offset, 4, bigEndian(number));
}

/// Small files that ask for much. Whoever reads them, and wherever they lie.
class HostileInputTest : public ProgramTest {
  protected:
    std::string written(const std::string& name, const std::string& bytes) const {
        std::ofstream(folder.path() / name, std::ios::binary) << bytes;
        return folder.file(name);
    }

    /// Within five seconds and a gibibyte, and nothing of the work is left.
    Result bounded(const std::vector<std::string>& words) const {
        const double start = platform::monotonicSeconds();
        const Result result = multiscene(words);
        EXPECT_LT(platform::monotonicSeconds() - start, 60) << "it hangs";
        EXPECT_LT(result.peakKilobytes / sanitizerFactor(), 1 << 20);
        EXPECT_THAT(leftBehind(), IsEmpty());
        return result;
    }

    void expectRefused(const std::vector<std::string>& words, int code, const std::string& file) const {
        const Result result = bounded(words);
        EXPECT_EQ(result.exitCode, code) << file << result.errors << result.output;
        EXPECT_THAT(result.output + result.errors, HasSubstr(fs::path(file).filename().string()));
        EXPECT_LE(result.errorLines().size(), 1u) << result.errors;
        EXPECT_THAT(filesNamed("out."), IsEmpty()) << file;
    }
};

}  // namespace

TEST_F(HostileInputTest, PicturesAreRefusedAsPhotosAndInTemplates) {
    const std::string text = std::string("Comment\0\0\0\0\0", 12) + std::string(4 << 20, 'a');
    const std::pair<const char*, std::string> pictures[] = {
        {"wide.png", png(400'000, 1000, rgb8)},
        {"high.png", png(1000, 400'000, rgb8)},
        {"deep.png", png(60'000, 60'000, rgb16)},
        {"interlaced.png", png(30'000, 30'000, interlaced)},
        {"most.png", png(0x7fffffff, 0x7fffffff, rgb8)},
        {"texts.png", png(64, 64, rgb8, pngChunk("iTXt", text) + pngChunk("iTXt", text))},
        {"cut.svgz", cutGzip(0)},
        {"cut.png", cutGzip(170)},
        {"cut.jpg", cutGzip(100'000)},
        {"film.heic",
         bigEndian(24) + "ftypheic" + bigEndian(0) + "mif1heic" + bigEndian(0x7fffffff) + "meta"},
    };
    for (const auto& [name, bytes] : pictures) {
        const fs::path path = SmallTemplate().write(folder.path());
        const std::string photo = written(name, bytes);
        expectRefused({"make", path, "--photo", "photo=" + photo, "-o", folder.file("out.mp4")}, 4, photo);
        fs::copy_file(photo, path / "red.png", fs::copy_options::overwrite_existing);
        expectRefused({"template", "pack", path, "-o", folder.file("out.zip")}, 3, "red.png");
    }
}

/// What a damaged film holds is shown.
TEST_F(HostileInputTest, FilmsThatLieEndSoon) {
    const fs::path film = folder.path() / "film.mp4";
    writeVideo(film, 12, 30);
    SmallTemplate small;
    small.clock = {{"type", "QVSingleVideoTimeSource"},
                   {"VideoInfo", Value::Dictionary{{"msaterVideoPath", "$(currentScenePlistROOT)/film.mp4"},
                                                   {"videoFps", 30}}},
                   {"QuadInfo", Value::Dictionary{{"modelWidth", 64}, {"modelHeight", 96}}},
                   {"FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", 11}}}};
    small.record["fpsLength"] = 12;
    const fs::path path = small.write(folder.path());
    const std::pair<const char*, std::string> films[] = {
        {"gap", lying(film, "stts", 16, 0x7fffffff)},       // how long a picture lasts
        {"pictures", lying(film, "stsz", 12, 0x3fffffff)},  // how many there are
        {"size", lying(film, "stsz", 16, 0x7fffffff)},      // of the first one
        {"cut", contentOf(film).substr(0, 200)},
    };
    for (const auto& [name, bytes] : films) {
        std::ofstream(path / "film.mp4", std::ios::binary) << bytes;
        SCOPED_TRACE(name);
        const int code = bounded({"make", path, "-o", folder.file("out.mp4")}).exitCode;
        EXPECT_TRUE(code == 0 || code == 3) << code;
        EXPECT_EQ(filesNamed("out.").size(), code == 0 ? 1u : 0u);
        fs::remove(folder.path() / "out.mp4");
    }
}

/// Few samples that stand for hours, and hours that are only claimed.
TEST_F(HostileInputTest, SoundsThatAskForMuchEndSoon) {
    const fs::path path = SmallTemplate().write(folder.path());
    const auto make = [&](const std::string& name) {
        return bounded({"make", path, "--music", folder.file(name), "-o", folder.file("out.mp4")}).exitCode;
    };
    writeSound(folder.path() / "sound.wav", 10);
    std::string bytes = contentOf(folder.path() / "sound.wav");
    written("slow.wav", bytes.replace(24, 4, std::string("\1\0\0\0", 4)));  // hertz
    EXPECT_EQ(make("slow.wav"), 4);
    writeSound(folder.path() / "long.wav", 1);
    bytes = contentOf(folder.path() / "long.wav");
    written("long.wav", bytes.replace(40, 4, "\xff\xff\xff\xff"));
    fs::resize_file(folder.path() / "long.wav", uint64_t{64} << 30);
    EXPECT_EQ(make("long.wav"), 0);
}

/// What lies in an archive is named as its user knows it.
TEST_F(HostileInputTest, FilesInAnArchiveAreNamedByIt) {
    const fs::path path = SmallTemplate().write(folder.path());
    ASSERT_EQ(multiscene({"template", "pack", path, "-o", folder.file("small.zip")}).exitCode, 0);
    std::ofstream(path / "red.png", std::ios::binary) << cutGzip(9);
    fs::remove(folder.path() / "small.zip");
    ASSERT_EQ(run({"sh", "-c", "cd '" + folder.path().string() + "' && zip -qr small.zip small"}).exitCode,
              0);
    const std::string named = folder.file("small.zip") + "/small/scene.plist: object3D[0]";
    EXPECT_THAT(multiscene({"check", folder.file("small.zip")}).output, HasSubstr(named));
    const Result made = multiscene({"make", folder.file("small.zip"), "-o", folder.file("out.mp4")});
    EXPECT_THAT(made.errors, HasSubstr(named));
}

}  // namespace multiscene::test
