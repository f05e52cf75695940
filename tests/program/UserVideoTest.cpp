// Films that the user gives: whether they fit, which picture is seen when, and their sound.

#include "platform/base/Json.h"
#include "platform/base/PropertyList.h"
#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

constexpr const char* kUserFrames = "userVideo_totalFps";

class UserVideoTest : public ProgramTest {
  protected:
    /// A template of ten frames a second that shows the film "clip" over its red background.
    static SmallTemplate withFilm(const std::string& shape = "") {
        SmallTemplate small;
        Value::Dictionary film = quad("film", "clip");
        film["TextureInfo"] =
            Value::Dictionary{{"textureType", "mp4Video"}, {"texture", "clip"}, {"videoFps", 10}};
        small.nodes = {small.nodes[0], film};
        Value::Dictionary input{{"userInputType", 3}, {"renderMapKey", "clip"}};
        if (!shape.empty()) {
            input["aspectWidth"] = shape.substr(0, 1);
            input["aspectHeight"] = shape.substr(2);
        }
        small.description["userInputArray"] = Value::Array{input};
        return small;
    }
    /// The same, as long as the film.
    static SmallTemplate asLongAsTheFilm() {
        SmallTemplate small = withFilm();
        small.clock["FpsInfo"] = Value::Dictionary{{"startFps", 0}, {"endFps", kUserFrames}};
        small.record["fpsLength"] = 0;
        small.record["sourceType"] = 7;
        return small;
    }

    /// What ffmpeg makes of the arguments.
    std::string film(const std::string& name, std::vector<std::string> arguments) const {
        std::vector<std::string> words{"ffmpeg", "-y", "-v", "error"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        words.push_back(folder.file(name));
        EXPECT_EQ(run(words).exitCode, 0) << name;
        return words.back();
    }
    std::string grey(const std::string& name, int frames, int framesPerSecond) const {
        writeVideo(folder.path() / name, frames, framesPerSecond);
        return folder.file(name);
    }
    /// One second of a tone under a plain picture.
    std::string sounding(const std::string& name) const {
        return film(name, {"-f", "lavfi", "-i", "color=c=blue:s=64x64:r=10:d=1", "-f", "lavfi", "-i",
                           "sine=frequency=440:duration=1", "-shortest", "-pix_fmt", "yuv420p"});
    }

    Result make(const fs::path& path, const std::string& clip, std::vector<std::string> more = {}) const {
        std::vector<std::string> words{"make",         path,   "--video",
                                       "clip=" + clip, "-o",   folder.file("out.mp4"),
                                       "--music",      "none", "--json"};
        words.insert(words.end(), more.begin(), more.end());
        return multiscene(words);
    }
    /// Frames announced.
    static int64_t total(const Result& made) {
        for (const Value& line : made.jsonLines())
            if (line.has("total")) return line.integer("total");
        return -1;
    }
    /// The middle pixel's colours in each of these frames.
    std::vector<std::array<int, 3>> middles(const fs::path& path, const std::string& clip,
                                            const std::vector<int>& frames,
                                            const std::vector<std::string>& more = {}) const {
        std::string list;
        for (const int frame : frames) list += (list.empty() ? "" : ",") + std::to_string(frame);
        const std::string out = folder.file("frames");
        std::vector<std::string> words{"frames", path, "--video", "clip=" + clip, "--at", list, "-o", out};
        words.insert(words.end(), more.begin(), more.end());
        const Result drawn = multiscene(words);
        EXPECT_EQ(drawn.exitCode, 0) << drawn.errors;
        std::vector<std::array<int, 3>> colors;
        for (const int frame : frames) {
            char name[40];
            std::snprintf(name, sizeof name, "/frame-%06d.png", frame);
            const platform::Bitmap picture = pictureIn(out + name);
            const uint8_t* pixel = picture.pixel(picture.width / 2, picture.height / 2);
            colors.push_back({pixel[0], pixel[1], pixel[2]});
        }
        return colors;
    }
    void writeFile(const std::string& name, const std::string& text) const {
        platform::writeFileAtomically(folder.file(name), text);
    }
    /// Loudest sample of the made video in decibels, or of what lies between those seconds; nothing when it
    /// is silent.
    std::optional<double> peak(double from = 0, double to = 100) const {
        const Result heard =
            run({"ffmpeg", "-i", folder.file("out.mp4"), "-af",
                 "atrim=" + std::to_string(from) + ":" + std::to_string(to) + ",volumedetect", "-f", "null",
                 "-"});
        const size_t at = heard.errors.find("max_volume: ");
        if (at == std::string::npos) return std::nullopt;
        return std::stod(heard.errors.substr(at + 12));
    }
};

}  // namespace

TEST_F(UserVideoTest, ShowsThePictureOfTheTimeAndIsTrimmedToItsPlace) {
    const auto path = withFilm("1:1").write(folder.path());
    EXPECT_EQ(multiscene({"check", path}).exitCode, 0);
    const std::string slow = grey("slow.mp4", 5, 5);
    const auto seen = middles(path, slow, {0, 1, 2, 4, 5});
    const std::vector<int> levels{0, 0, 1, 2, 2};  // each picture starts with the frame nearest to its time
    for (size_t i = 0; i < seen.size(); ++i) EXPECT_NEAR(seen[i][1], 40 * levels[i], 6) << i;
    const Result made = make(path, slow);
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_THAT(made.output, HasSubstr("clip: slow.mp4 has 5 frames a second, the video 10"));
    EXPECT_THAT(made.output, HasSubstr("the first 6 frames (0.60 s) are shown"));
    EXPECT_THAT(made.jsonLines().back().array("skipped"), IsEmpty());
    EXPECT_EQ(made.jsonLines().back().integer("frames"), 6);
}

TEST_F(UserVideoTest, TooShortForItsPlaceIsRefusedBeforehand) {
    const Result made = make(withFilm().write(folder.path()), grey("short.mp4", 5, 10));
    EXPECT_EQ(made.exitCode, 4);
    EXPECT_THAT(made.errors,
                HasSubstr("short.mp4: clip: is too short: 5 frames (0.50 s) at 10 frames a second, and "
                          "its place needs 6 frames (0.60 s)"));
    EXPECT_THAT(filesNamed("out"), IsEmpty());
    EXPECT_EQ(make(withFilm().write(folder.path()), grey("fits.mp4", 6, 10)).exitCode, 0);
}

TEST_F(UserVideoTest, GivesASceneItsLengthAndMustOutlastTheTransitionIntoIt) {
    SmallTemplate small = asLongAsTheFilm();
    const Result made = make(small.write(folder.path()), grey("slow.mp4", 4, 5));
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_EQ(total(made), 9) << "4 pictures at 5 are 8 frames at 10 a second, and \"endFps\" is inclusive";
    EXPECT_EQ(made.jsonLines().back().integer("frames"), total(made));
    const auto last = folder.file("last");
    EXPECT_EQ(multiscene({"frames", folder.path() / small.name, "--video", "clip=" + folder.file("slow.mp4"),
                          "--at", "8", "-o", last})
                  .exitCode,
              0);

    // Behind another scene, with a transition of four frames between.
    small.moreRecords = {recordOf(8, small.name, "first.plist", 8),
                         recordOf(9, small.name, "change.plist", 4)};
    small.description["sceneGroup"] = Value::Array{
        Value::Dictionary{
            {"mainSceneId", 8},
            {"sceneTansitionsInfo", Value::Dictionary{{"tansitionsSceneId", 9}, {"fpsTotal", 4}}}},
        Value::Dictionary{{"mainSceneId", SmallTemplate::sId}, {"sceneIdentifier", "b"}}};
    const auto path = small.write(folder.path());
    for (const auto& [file, frames] : {std::pair{"first.plist", 8}, std::pair{"change.plist", 4}})
        platform::writePropertyList(
            path / file, Value::Dictionary{{"Camera", small.camera}, {"TimeSource", clockOf(frames)}});
    const Result refused = make(path, grey("short.mp4", 4, 10));
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_THAT(refused.errors, HasSubstr("needs 5 frames (0.50 s)"));
    const Result longer = make(path, grey("long.mp4", 5, 10));
    EXPECT_EQ(longer.exitCode, 0) << longer.errors;
    EXPECT_EQ(total(longer), 8 + 5 + 1 - 4);
    EXPECT_EQ(longer.jsonLines().back().integer("frames"), total(longer));
}

TEST_F(UserVideoTest, WithAGapOfHoursEndsTheJobAtOnce) {
    const std::string gap =
        film("gap.mp4", {"-f", "lavfi", "-i", "color=s=64x64:r=1:d=2", "-vf", "setpts=N*100000/TB", "-vsync",
                         "passthrough", "-bf", "0", "-video_track_timescale", "1"});
    for (const SmallTemplate& small : {withFilm(), asLongAsTheFilm()}) {
        const Result made = make(small.write(folder.path()), gap);
        EXPECT_EQ(made.exitCode, 4);
        EXPECT_THAT(made.errors,
                    HasSubstr("gap.mp4: is damaged: it has no picture from 0.0 s to 100000.0 s"));
    }
    const std::string hour = film("hour.mp4", {"-f", "lavfi", "-i", "color=s=16x16:r=1/20:d=1200"});
    const Result long_ = make(asLongAsTheFilm().write(folder.path()), hour);
    EXPECT_EQ(long_.exitCode, 4);
    EXPECT_THAT(long_.errors, HasSubstr("is too long: the template plays all of it, at most 15 minutes"));
    EXPECT_EQ(make(withFilm().write(folder.path()), hour).exitCode, 0)
        << "no more of it is read than is shown";
    EXPECT_EQ(make(withFilm().write(folder.path()), folder.file("none.mp4")).exitCode, 4);
    const std::string dot = film("dot.mp4", {"-i", hour, "-vf", "scale=1:1,format=yuv444p"});
    EXPECT_THAT(make(withFilm().write(folder.path()), dot).errors, HasSubstr("the video has 1x1 pixels"));
    writePicture(folder.path() / "no.png", 0);
    EXPECT_EQ(make(withFilm().write(folder.path()), folder.file("no.png")).exitCode, 4);
}

TEST_F(UserVideoTest, BeginsWhereTheUserWants) {
    // Each picture has its own grey; what can be entered only at some pictures is entered before them.
    const std::vector<std::string> source{
        "-f",   "lavfi",   "-i",       "nullsrc=s=64x64:r=10:d=6,geq=lum=16+N*3:cb=128:cr=128",
        "-f",   "lavfi",   "-i",       "aevalsrc='if(lt(t,2.4),0,sin(2765*t))':d=6",
        "-c:v", "libx264", "-g",       "25",
        "-bf",  "3",       "-pix_fmt", "yuv420p"};
    const auto path = withFilm().write(folder.path());
    std::vector<std::string> clips;
    for (const char* name : {"clip.mp4", "clip.mkv", "clip.ts"}) clips.push_back(film(name, source));
    for (const std::string& clip : clips) {
        const auto seen = middles(path, clip, {0, 5}, {"--video-start", "clip=2.6"});
        EXPECT_NEAR(seen[0][1], (26 * 3) * 255 / 219, 3) << clip;
        EXPECT_NEAR(seen[1][1], (31 * 3) * 255 / 219, 3) << clip;
    }
    writeFile("media.json", R"({"clip": {"file": "clip.mkv", "start": 2.5, "volume": 1}})");
    const std::vector<std::string> words{"make",    path,   "--media", folder.file("media.json"),
                                         "--music", "none", "-o",      folder.file("out.mp4")};
    ASSERT_EQ(multiscene(words).exitCode, 0);
    EXPECT_GT(peak().value_or(-91), -10) << "the sound begins there too";
    writeFile("media.json", R"({"clip": {"file": "clip.mkv", "start": 0.5, "volume": 1}})");
    ASSERT_EQ(multiscene(words).exitCode, 0);
    EXPECT_LT(peak().value_or(-91), -60);
    for (const char* wrong : {R"({"clip": {"file": "clip.mkv", "start": 5.9}})",
                              R"({"clip": {"file": "clip.mkv", "start": "2"}})", R"({"clip": {"start": 1}})",
                              R"({"clip": {"file": "clip.mkv", "crop": {}}})"}) {
        writeFile("media.json", wrong);
        EXPECT_EQ(multiscene(words).exitCode, 4) << wrong;
    }
}

TEST_F(UserVideoTest, BringsItsSoundWhereTheTemplateOrTheUserWantsIt) {
    SmallTemplate small = withFilm();
    const std::string tone = sounding("tone.mp4");
    ASSERT_EQ(make(small.write(folder.path()), tone).exitCode, 0);
    EXPECT_FALSE(peak()) << "a template that says nothing keeps it silent";
    ASSERT_EQ(make(small.write(folder.path()), tone, {"--video-volume", "clip=1"}).exitCode, 0);
    const auto full = peak();
    ASSERT_TRUE(full);
    EXPECT_GT(*full, -25);

    Value::Dictionary film = small.nodes[1].dictionary();
    film["TextureInfo"] = film["TextureInfo"].with("audioVolume", 0.25);
    film["FpsInfo"] = Value::Dictionary{{"startFps", 0}, {"endFps", 2}};
    small.nodes[1] = film;
    const auto path = small.write(folder.path());
    EXPECT_EQ(multiscene({"check", path}).exitCode, 0);
    const Result made = make(path, tone);
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    EXPECT_THAT(made.jsonLines().back().array("skipped"), IsEmpty());
    const auto quarter = peak();
    ASSERT_TRUE(quarter);
    EXPECT_NEAR(*quarter - *full, -12, 1.5);
    EXPECT_LT(peak(0.4).value_or(-91), -60) << "it ends with its pictures, after three frames";
    ASSERT_EQ(make(path, tone, {"--video-volume", "clip=0"}).exitCode, 0);
    EXPECT_FALSE(peak());
    EXPECT_EQ(make(path, tone, {"--video-volume", "clip=2"}).exitCode, 2);
    EXPECT_EQ(make(path, grey("mute.mp4", 6, 10), {"--video-volume", "clip=1"}).exitCode, 0)
        << "has no sound";
}

TEST_F(UserVideoTest, KeepsPicturesAndSoundTogether) {
    const auto path = withFilm().write(folder.path());
    const auto clip = [&](const std::string& name, const std::string& pictureAt, const std::string& soundAt,
                          const std::string& sound) {
        return film(name, {"-itsoffset", pictureAt, "-f", "lavfi", "-i", "color=c=blue:s=64x64:r=10:d=1",
                           "-itsoffset", soundAt, "-f", "lavfi", "-i", sound, "-vsync", "passthrough",
                           "-pix_fmt", "yuv420p", "-bf", "0"});
    };
    const std::string tone = "sine=frequency=440:duration=1";
    const std::string second = "aevalsrc='if(lt(t,0.8),0,sin(2765*t))':d=2";  // silent at first
    for (const char* kind : {".mp4", ".mkv", ".ts"}) {
        for (const std::string& late : {clip(std::string("sound") + kind, "0", "0.3", tone),
                                        clip(std::string("picture") + kind, "0.5", "0", second)}) {
            ASSERT_EQ(make(path, late, {"--video-volume", "clip=1"}).exitCode, 0) << late;
            EXPECT_LT(peak(0, 0.2).value_or(-91), -40) << late;
            EXPECT_GT(peak(0.4, 0.6).value_or(-91), -25) << late;
        }
    }
}

TEST_F(UserVideoTest, OfPixelsThatAreNotSquareIsCutAsItIsSeen) {
    // Stored as a square and seen twice as wide: the middle square of that is red.
    const std::string wide =
        film("wide.mp4",
             {"-f", "lavfi", "-i", "color=c=blue:s=64x64:r=10:d=1,drawbox=x=16:w=32:c=red:t=fill,setsar=2",
              "-pix_fmt", "yuv420p"});
    const std::string out = folder.file("seen");
    ASSERT_EQ(multiscene({"frames", withFilm("1:1").write(folder.path()), "--video", "clip=" + wide, "--at",
                          "0", "-o", out})
                  .exitCode,
              0);
    const platform::Bitmap seen = pictureIn(out + "/frame-000000.png");
    for (const int x : {4, 59}) EXPECT_GT(seen.pixel(x, seen.height / 2)[0], 200) << x;
}

}  // namespace multiscene::test
