#include <fstream>
#include <set>

#include "app/check/Checker.h"
#include "app/check/SceneFormatReference.h"
#include "core/Material/TextureInfoKeys.h"
#include "format/NodeTypes.h"
#include "format/TrackFile.h"
#include "pictureFilter/FilterTypes.h"
#include "platform/base/Paths.h"
#include "playback/VideoTimeSource.h"
#include "tests/engine/PvrBytes.h"
#include "tests/program/ProgramTest.h"
#include "tween/Ease.h"

namespace multiscene::test {

namespace {

constexpr int kRate = 30, kFilmFrames = 24;

void writeBytes(const fs::path& file, const std::vector<uint8_t>& bytes) {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

/// What the example template names without bringing it along.
void writeMedia(const fs::path& folder) {
    for (const char* name : {"card", "star", "frame", "flame1", "flame2", "flame3", "flame4"})
        writePicture(folder / (std::string(name) + ".png"), 0x4060c0);
    for (const char* name : {"spark1.pvr", "spark2.pvr"})
        writeBytes(folder / name, testing::pvr({}, std::vector<uint8_t>(16, 200)));
    for (const char* name : {"confetti.mp4", "morning.mp4", "green.mp4", "mask.mp4"})
        writeVideo(folder / name, kFilmFrames, kRate);
    const std::string toy = "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    writeBytes(folder / "toy.obj", {toy.begin(), toy.end()});
    for (const char* name : {"pop.wav", "music.wav"}) writeSound(folder / name, 1);
    const std::string track =
        "<CornerPinInfoDoc><Object><Frame bottomleftx=\"0.2\" bottomlefty=\"0.3\" bottomrightx=\"0.8\" "
        "bottomrighty=\"0.3\" toprightx=\"0.8\" toprighty=\"0.7\" topleftx=\"0.2\" "
        "toplefty=\"0.7\"/></Object></CornerPinInfoDoc>";
    writeBytes(folder / "sign.track",
               TrackFile::encryptedAES256DataUsingDefaultKey({track.begin(), track.end()}, "sign"));
}

class FormatExamplesTest : public ProgramTest {
  protected:
    FormatExamplesTest() {
        fs::copy(platform::resourcesFolder() / "examples/birthday", path, fs::copy_options::recursive);
        writeMedia(path / "res");
        writePicture(folder.file("me.png"), 0x20c060);
    }

    fs::path path = folder.path() / "birthday";
};

size_t coloursOf(const fs::path& file) {
    const platform::Bitmap picture = pictureIn(file);
    std::set<uint32_t> colours;
    for (size_t at = 0; at < picture.rgba.size(); at += 4)
        colours.insert(picture.rgba[at] << 16 | picture.rgba[at + 1] << 8 | picture.rgba[at + 2]);
    return colours.size();
}

}  // namespace

TEST_F(FormatExamplesTest, PassTheCheckAndAreDrawn) {
    for (const Finding& finding : checkPath(path, nullptr)) ADD_FAILURE() << describe(finding);
    const Result drawn =
        multiscene({"frames", path, "--text", "title=Anna", "--photo", "photo=" + folder.file("me.png"), "-o",
                    folder.file("out"), "--at", "5,14,25,40,60,80"});
    EXPECT_EQ(drawn.exitCode, 0) << drawn.errors;
    EXPECT_THAT(drawn.output + drawn.errors, Not(HasSubstr("left out")));
    for (const char* frame : {"05", "14", "25", "40", "60", "80"})
        EXPECT_GT(coloursOf(folder.file("out/frame-0000" + std::string(frame) + ".png")), 2u) << frame;
}

TEST_F(FormatExamplesTest, ItsGroupFilePlays) {
    const std::string archive = folder.file("birthday.zip");
    const Result packed = multiscene({"template", "pack", path, "-o", archive});
    ASSERT_EQ(packed.exitCode, 0) << packed.output << packed.errors;
    const Result installed = multiscene({"templates", "install", archive});
    ASSERT_EQ(installed.exitCode, 0) << installed.errors;
    const Result played = multiscene(
        {"render", path / "group.plist", "--size", "90x160", "--fps", "30", "-o", folder.file("o.mp4")});
    EXPECT_EQ(played.exitCode, 0) << played.errors;
}

TEST(SceneFormat, EverySectionHasAnExample) {
    const std::string reference = sceneFormatReference();
    size_t sections = 0;
    for (size_t at = reference.find("\n### "); at != std::string::npos; ++sections) {
        const size_t next = reference.find("\n### ", at + 1);
        const std::string section = reference.substr(at, next - at);
        EXPECT_THAT(section, HasSubstr("```xml\n<dict>")) << section.substr(0, 60);
        at = next;
    }
    EXPECT_GT(sections, 60u);
}

TEST(Gallery, ShowsEverythingThatScenesAreMadeOf) {
    const fs::path docs = fs::path(MULTISCENE_SOURCE) / "docs";
    const std::string page = contentOf(docs / "gallery.md");
    const auto expectShown = [&](const std::string& name) {
        EXPECT_THAT(page, HasSubstr("`" + name + "`"))
            << "give it an entry in scripts/make-gallery and run that";
    };
    for (const KeyVariants& types : {nodeVariants, timeSourceVariants, materialVariants, filterVariants})
        for (const std::string_view name : types.names()) expectShown(std::string(name));
    for (size_t ease = 0; ease < easeTable().size(); ++ease) expectShown(std::to_string(ease));
    for (const auto& file : fs::directory_iterator(platform::resourcesFolder() / "filmLooks"))
        expectShown(file.path().stem().string());

    size_t bytes = 0;
    for (const auto& file : fs::recursive_directory_iterator(docs / "gallery"))
        if (file.is_regular_file()) {
            bytes += file.file_size();
            EXPECT_THAT(page, HasSubstr("(" + fs::relative(file, docs).string() + ")"))
                << "a picture of nothing";
        }
    EXPECT_LT(bytes, 1'500'000u);
    for (size_t at = 0; (at = page.find("](gallery/", at)) != std::string::npos; ++at) {
        const std::string file = page.substr(at + 2, page.find(')', at) - at - 2);
        EXPECT_TRUE(fs::exists(docs / file)) << file;
    }
}

TEST(SceneFormat, CommittedReferenceIsTheGeneratedOne) {
    EXPECT_TRUE(contentOf(MULTISCENE_SOURCE "/docs/scene-format.md") == sceneFormatReference())
        << "run: build/bin/multiscene scene-format > docs/scene-format.md";
}

}  // namespace multiscene::test
