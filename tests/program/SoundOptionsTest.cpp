// What is heard in a finished video, measured by others: ffmpeg decodes it and tells its loudness.
#include <cmath>
#include <cstring>

#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace {

constexpr int kRate = 44100;

struct Measured {
    double loudness = 0, peak = 0;  ///< LUFS, dB
};

double numberAfter(const std::string& text, const std::string& label) {
    const size_t at = text.rfind(label);
    return at == std::string::npos ? NAN : std::strtod(text.c_str() + at + label.size(), nullptr);
}

Measured measure(const std::string& file) {
    const Result result = run({"ffmpeg", "-nostats", "-hide_banner", "-i", file, "-vn", "-af",
                               "ebur128=peak=true", "-f", "null", "-"});
    return {numberAfter(result.errors, "I:"), numberAfter(result.errors, "Peak:")};
}

class SoundOptionsTest : public ProgramTest {
  protected:
    SoundOptionsTest() {
        // 3.1 s with the moment before the first frame: too short for the fades of longer videos.
        SmallTemplate small;
        small.clock = clockOf(30);
        small.record["fpsLength"] = 30;
        path_ = small.write(folder.path());
    }

    /// `level` is ffmpeg's expression of the time t.
    std::string sound(const std::string& level, const std::string& seconds) const {
        const std::string file = folder.file("music.wav");
        run({"ffmpeg", "-y", "-v", "error", "-f", "lavfi", "-i",
             "aevalsrc=exprs='" + level + "|" + level + "':d=" + seconds + ":s=44100", file});
        return file;
    }

    Result make(const std::string& music, const std::vector<std::string>& options) const {
        std::vector<std::string> words{"make",  path_, "--music", music, "-o", folder.file("out.mp4"),
                                       "--json"};
        words.insert(words.end(), options.begin(), options.end());
        Result result = multiscene(words);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return result;
    }

    std::vector<float> samples() const {
        const Result result = run({"ffmpeg", "-v", "error", "-i", folder.file("out.mp4"), "-vn", "-f",
                                   "f32le", "-af", "pan=mono|c0=c0", "-ar", "44100", "-"});
        std::vector<float> decoded(result.output.size() / sizeof(float));
        std::memcpy(decoded.data(), result.output.data(), decoded.size() * sizeof(float));
        return decoded;
    }
    /// The mean level of a tenth of a second around a time, as a factor of the tone's.
    static double levelAt(const std::vector<float>& samples, double seconds) {
        double energy = 0;
        const auto from = static_cast<size_t>((seconds - 0.05) * kRate);
        for (size_t i = from; i < from + kRate / 10; ++i) energy += samples.at(i) * samples.at(i);
        return std::sqrt(energy / (kRate / 10)) / (0.5 * std::sqrt(0.5));
    }

    std::filesystem::path path_;
};

const std::string tone = "0.5*sin(2*PI*440*t)";

}  // namespace

TEST_F(SoundOptionsTest, MusicStartsFadesAndIsAsLoudAsAskedFor) {
    const std::string music = sound("if(lt(t,1),0," + tone + ")", "2");
    make(music, {});
    EXPECT_NEAR(levelAt(samples(), 0.5), 0, 0.02);
    EXPECT_NEAR(levelAt(samples(), 1.5), 1, 0.03);
    EXPECT_NEAR(levelAt(samples(), 2.5), 0, 0.02) << "it begins again";
    make(music, {"--music-start", "1", "--music-volume", "0.25"});
    for (const double second : {0.2, 0.9, 1.1, 2.5})
        EXPECT_NEAR(levelAt(samples(), second), 0.25, 0.02) << second;
    make(music, {"--music-start", "1", "--music-fade", "0.5,2"});
    EXPECT_NEAR(levelAt(samples(), 0.25), 0.5, 0.05);
    EXPECT_NEAR(levelAt(samples(), 0.8), 1, 0.03);
    EXPECT_NEAR(levelAt(samples(), 2.1), 0.5, 0.05);
    make(music, {"--music-start", "1", "--music-fade", "1"});
    EXPECT_NEAR(levelAt(samples(), 0.5), 0.5, 0.05);
    EXPECT_NEAR(levelAt(samples(), 2.6), 0.5, 0.05);
    EXPECT_THAT(make("none", {"--music-volume", "2"}).output, HasSubstr("there is no music"));
}

TEST_F(SoundOptionsTest, LoudnessIsReachedAndTold) {
    for (const std::string level : {"0.05*sin(2*PI*440*t)", "if(gt(sin(2*PI*220*t),0),1,-1)"}) {
        const Result result = make(sound(level, "1.3"), {"--loudness", "-18"});
        const Measured measured = measure(folder.file("out.mp4"));
        EXPECT_NEAR(measured.loudness, -18, 0.4) << level;
        EXPECT_LE(measured.peak, -1.0) << level;
        const Value told = result.jsonLines().back()["sound"];
        EXPECT_NEAR(told["loudness"].doubleValue(), measured.loudness, 0.2);
        EXPECT_NEAR(told["loudnessBefore"].doubleValue() + told["gain"].doubleValue(), -18, 0.5);
        EXPECT_FALSE(told["limited"].boolValue());
    }
    const Result silent = make(sound("0", "1"), {"--loudness", "-18"});
    EXPECT_THAT(silent.output, HasSubstr("nothing to hear"));
    EXPECT_TRUE(silent.jsonLines().back()["sound"]["loudness"].isNone());
    for (const float sample : samples()) ASSERT_EQ(sample, 0);
    EXPECT_TRUE(make("none", {"--loudness", "-18"}).jsonLines().back()["sound"].isNone());
}

TEST_F(SoundOptionsTest, NoVideoIsOverFullScaleAndACalmOneIsNotTouched) {
    const Result hard = make(sound("if(gt(sin(2*PI*220*t),0),1,-1)", "1"), {});
    EXPECT_LE(measure(folder.file("out.mp4")).peak, -1.0);
    EXPECT_TRUE(hard.jsonLines().back()["sound"]["limited"].boolValue());
    const Result calm = make(sound(tone, "1"), {"--loudness", "off"});
    const Value told = calm.jsonLines().back()["sound"];
    EXPECT_FALSE(told["limited"].boolValue());
    EXPECT_EQ(told["gain"].doubleValue(), 0);
    EXPECT_NEAR(levelAt(samples(), 1.5), 1, 0.03);
}

}  // namespace multiscene::test
