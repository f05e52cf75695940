// Sounds, films, drawn texts, options.
#include "tests/program/LimitTrial.h"

#include "platform/audio/AudioMixer.h"
#include "platform/base/Json.h"
#include "tests/platform/WavBytes.h"

namespace multiscene::test {

namespace {

/// Silence.
std::string wav(uint64_t rate, uint64_t channels, uint64_t seconds = 1) {
    return platform::test::wav(static_cast<uint32_t>(rate), static_cast<uint32_t>(channels),
                               static_cast<int64_t>(std::min<uint64_t>(rate, 8000) * seconds),
                               [](int64_t, int) { return 0.0; });
}

Trial ofSound(const std::string& limit, std::function<std::string(uint64_t)> bytes, bool isLeast = false) {
    return {limit,
            kInput,
            {"a.wav"},
            [=](const PlayLimitsTest& test, uint64_t number) {
                return verdictOf([&] {
                    const platform::AudioFile sound(test.opened("a.wav", bytes(number)), "a.wav",
                                                    platform::ErrorKind::Input);
                    return std::string();
                });
            },
            0,
            isLeast};
}

/// A film of the user that says of itself what it is.
Trial ofFilm(const std::string& limit, std::vector<std::string> named, bool givesLength,
             std::function<std::vector<std::string>(uint64_t)> source) {
    return {
        limit, kInput, std::move(named), [=](const PlayLimitsTest& test, uint64_t number) {
            std::vector<std::string> words{"ffmpeg", "-y", "-v", "error", "-f", "lavfi", "-i"};
            for (const std::string& word : source(number)) words.push_back(word);
            words.insert(words.end(), {"-c:v", "mjpeg", "-q:v", "31", test.folder.file("a.mov")});
            EXPECT_EQ(run(words).exitCode, 0);
            SmallTemplate small;
            Value::Dictionary film = quad("film", "clip");
            film["TextureInfo"] =
                Value::Dictionary{{"textureType", "mp4Video"}, {"texture", "clip"}, {"videoFps", 10}};
            small.nodes = {film};
            small.description["userInputArray"] =
                Value::Array{Value::Dictionary{{"userInputType", 3}, {"renderMapKey", "clip"}}};
            if (givesLength) {
                small.clock["FpsInfo"] = Value::Dictionary{{"startFps", 0}, {"endFps", "userVideo_totalFps"}};
                small.record["fpsLength"] = 0;
                small.record["sourceType"] = 7;
            }
            return test.verdict({"frames", small.write(test.folder.path()), "--at", "0", "--video",
                                 "clip=" + test.folder.file("a.mov"), "-o", test.folder.file("out")});
        }};
}

/// A text that is drawn, and told of when something of it is not.
Trial ofDrawnText(const std::string& limit, std::function<std::string(uint64_t)> text) {
    return {limit, kTemplate, {"long"}, [=](const PlayLimitsTest& test, uint64_t number) {
                SmallTemplate small;
                small.nodes.resize(1);
                small.nodes.push_back(Value::Dictionary{
                    {"type", "QVGLFont2DTextureFontObject3D"},
                    {"TextureFontInfo", Value::Dictionary{{"textString", "long"}, {"fontSize", 10}}}});
                small.description["userInputArray"] =
                    Value::Array{Value::Dictionary{{"userInputType", 0}, {"renderMapKey", "long"}}};
                test.written("a.json", platform::jsonText(Value::Dictionary{{"long", text(number)}}));
                const Result result =
                    test.inTime({"frames", small.write(test.folder.path()), "--at", "0", "--json", "--media",
                                 test.folder.file("a.json"), "-o", test.folder.file("out")});
                if (result.exitCode != kAccepted) return Verdict{result.exitCode, result.errors};
                const Value told = result.jsonLines().back()["usedOtherwise"];
                return Verdict{told.array().empty() ? kAccepted : kTemplate, platform::jsonText(told)};
            }};
}

/// A template that is not there is only looked for when the words are right.
Trial ofOption(const std::string& limit, const std::string& option, bool isLeast = false) {
    return {limit,
            2,
            {option},
            [=](const PlayLimitsTest& test, uint64_t number) {
                Verdict verdict = test.verdict(
                    {"make", "none", "-o", test.folder.file("out.mp4"), option, std::to_string(number)});
                if (verdict.code == kTemplate) verdict.code = kAccepted;
                return verdict;
            },
            0,
            isLeast};
}

}  // namespace

std::vector<Trial> soundAndFilmTrials() {
    const auto color = [](const std::string& size, const std::string& rate, uint64_t seconds) {
        return std::vector<std::string>{"color=s=" + size + ":r=" + rate + ":d=" + std::to_string(seconds)};
    };
    return {
        ofSound(
            "minSoundRate", [](uint64_t rate) { return wav(rate, 1); }, true),
        ofSound("maxSoundRate", [](uint64_t rate) { return wav(rate, 1); }),
        ofSound("maxSoundChannels", [](uint64_t channels) { return wav(8000, channels); }),
        {"maxSoundSeconds",
         kTemplate,
         {},
         [](const PlayLimitsTest& test, uint64_t seconds) {
             const platform::AudioFile sound(test.opened("a.wav", wav(1000, 1, seconds)), "a.wav");
             const bool isWhole =
                 sound.frameCount() == static_cast<int64_t>(seconds) * platform::kAudioSampleRate;
             return Verdict{isWhole ? kAccepted : kTemplate,
                            "left out: more than " + std::to_string(seconds - 1)};
         }},
        {"maxSoundsAtOnce",
         kTemplate,
         {"a.wav"},
         [](const PlayLimitsTest& test, uint64_t number) {
             const auto sound =
                 std::make_shared<platform::AudioFile>(test.opened("a.wav", wav(8000, 1)), "a.wav");
             platform::AudioTimeline timeline;
             for (uint64_t at = 0; at < number; ++at)
                 timeline.tracks.push_back({{{.file = sound,
                                              .duration = platform::CMTimeMake(1, 1),
                                              .at = platform::CMTimeMake(0, 1)}},
                                            {}});
             // What begins when the others end is not heard with them.
             timeline.tracks.push_back(
                 {{{.file = sound, .duration = platform::CMTimeMake(1, 1), .at = platform::CMTimeMake(1, 1)}},
                  {}});
             return verdictOf([&] { return platform::AudioMixer(timeline), std::string(); });
         }},
        ofDrawnText("maxTextCharacters", [](uint64_t characters) { return std::string(characters, 'a'); }),
        ofDrawnText("maxCharacterCodePoints",
                    [](uint64_t codePoints) { return "a" + repeated("\u0301", codePoints - 1); }),
        ofFilm("maxFilmSide", {"a.mov"}, false,
               [=](uint64_t side) { return color(std::to_string((side + 1) / 2 * 2) + "x2", "10", 1); }),
        ofFilm("maxFilmPixels", {"a.mov"}, false,
               [=](uint64_t pixels) {  // of an even width, as such films have
                   const uint64_t height = 4608, pair = 2 * height;
                   return color(std::to_string((pixels + pair - 1) / pair * 2) + "x" + std::to_string(height),
                                "10", 1);
               }),
        ofFilm("maxPictureSeconds", {"a.mov"}, false,
               [=](uint64_t seconds) { return color("16x16", "1/" + std::to_string(seconds), 4 * seconds); }),
        ofFilm("maxUserFilmSeconds", {"a.mov"}, true,
               [=](uint64_t seconds) { return color("16x16", "1", seconds); }),
        ofOption("maxBitRate", "--bitrate"),
        ofOption("minBitRate", "--bitrate", true),
        ofOption("maxMusicSeconds", "--music-start"),
    };
}

}  // namespace multiscene::test
