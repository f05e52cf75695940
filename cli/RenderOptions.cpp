#include "cli/RenderOptions.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "app/job/PhotoPart.h"
#include "platform/base/Error.h"
#include "platform/base/Limits.h"
#include "platform/media/VideoWriter.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

constexpr int kMaxFramesPerSecond = platform::limitOf<int>("maxFramesPerSecond");
constexpr const char* kPair = "KEY=VALUE; multiscene templates show TEMPLATE lists the keys";
constexpr const char* kFilePair = "KEY=FILE; multiscene templates show TEMPLATE lists the keys";
constexpr double kMostSeconds = platform::limitOf<double>("maxMusicSeconds");
constexpr int64_t kLeastBitRate = platform::limitOf<int64_t>("minBitRate"),
                  kMostBitRate = platform::limitOf<int64_t>("maxBitRate");

Error wrong(const std::string& value, const std::string& wanted) {
    return Error(ErrorKind::Usage, "\"" + value + "\" is not " + wanted);
}

std::optional<int64_t> wholeNumber(std::string_view text) {
    int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = result.ec == std::errc() && result.ptr == text.data() + text.size();
    return isWhole ? std::optional(number) : std::nullopt;
}

int64_t numberWithin(const std::string& text, int64_t least, int64_t most) {
    const auto number = wholeNumber(text);
    if (number && *number >= least && *number <= most) return *number;
    throw wrong(text, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
}

double decimalWithin(std::string_view text, double least, double most, const std::string& wanted) {
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = result.ec == std::errc() && result.ptr == text.data() + text.size();
    if (isNumber && number >= least && number <= most) return number;
    throw wrong(std::string(text), wanted);
}

JobInputs::Given keyAndValue(const std::string& text, const char* wanted) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) throw wrong(text, wanted);
    return {text.substr(0, equals), text.substr(equals + 1)};
}

/// Separated by commas.
std::vector<double> numbersOf(const std::string& list, const char* wanted) {
    std::vector<double> numbers;
    for (size_t start = 0; start <= list.size();) {
        const size_t comma = std::min(list.find(',', start), list.size());
        double number = 0;
        const auto result = std::from_chars(list.data() + start, list.data() + comma, number);
        if (result.ec != std::errc() || result.ptr != list.data() + comma) throw wrong(list, wanted);
        numbers.push_back(number);
        start = comma + 1;
    }
    return numbers;
}

JobInputs::PhotoPart cropOf(const std::string& text) {
    constexpr const char* wanted =
        "KEY=x,y,w,h with numbers from 0 to 1 that lie inside the picture, and an angle after them if wanted";
    const JobInputs::Given given = keyAndValue(text, wanted);
    auto n = numbersOf(given.value, wanted);
    if (n.size() == 4) n.push_back(0);
    if (n.size() != 5) throw wrong(given.value, wanted);
    const auto part = photoPart(n[0], n[1], n[2], n[3], n[4]);
    if (!part) throw wrong(given.value, wanted);
    return {given.key, *part};
}

JobInputs::PhotoPart focusOf(const std::string& text) {
    constexpr const char* wanted = "KEY=x,y with numbers from 0 to 1";
    const JobInputs::Given given = keyAndValue(text, wanted);
    const auto n = numbersOf(given.value, wanted);
    const auto isShare = [](double number) { return number >= 0 && number <= 1; };
    if (n.size() != 2 || !std::ranges::all_of(n, isShare)) throw wrong(given.value, wanted);
    return {given.key, {platform::PhotoCrop::Kind::Focus, n[0], n[1]}};
}

/// A text as it is typed: \n begins a new line, \\ is a backslash, and others stay as they are.
std::string withLineBreaks(const std::string& typed) {
    std::string text;
    for (size_t at = 0; at < typed.size(); ++at) {
        const char next = typed[at] == '\\' && at + 1 < typed.size() ? typed[at + 1] : '\0';
        const bool isEscape = next == 'n' || next == '\\';
        text += next == 'n' ? '\n' : typed[at];
        if (isEscape) ++at;
    }
    return text;
}

MediaSize sizeOf(std::string text) {
    const size_t cross = text.find_first_of("xX");
    if (cross != std::string::npos) text[cross] = ',';
    const auto size = parseMediaSize(text);
    if (!size || cross == std::string::npos) throw wrong(text, "a size such as 720x1280");
    return *size;
}

/// "1500000", "1500k", "1.5M" is not: whole numbers with an optional unit.
int bitRateOf(const std::string& text) {
    const char unit = text.empty() ? '0' : text.back();
    const int64_t factor = unit == 'k' || unit == 'K' ? 1000 : unit == 'm' || unit == 'M' ? 1'000'000 : 1;
    const auto number = wholeNumber(factor == 1 ? text : text.substr(0, text.size() - 1));
    if (!number || *number < 1 || *number > kMostBitRate / factor || *number * factor < kLeastBitRate)
        throw wrong(text, "a bit rate such as 1500k or 4M, from " + std::to_string(kLeastBitRate) + " to " +
                              std::to_string(kMostBitRate) + " bits a second");
    return static_cast<int>(*number * factor);
}

std::string presetOf(const std::string& text) {
    const std::string presets = " " + platform::VideoWriter::presets() + " ";
    if (!text.empty() && presets.find(" " + text + " ") != std::string::npos) return text;
    throw wrong(text, "one of" + presets.substr(0, presets.size() - 1));
}

double secondsOf(std::string_view text) {
    return decimalWithin(text, 0, kMostSeconds,
                         "a number of seconds from 0 to " +
                             std::to_string(platform::limitOf("maxMusicSeconds")) + ", such as 2.5");
}

/// "2" is both fades, "0.5,3" the one in and the one out.
void setFades(const std::string& text, MusicSettings& settings) {
    const size_t comma = text.find(',');
    settings.fadeIn = secondsOf(std::string_view(text).substr(0, comma));
    settings.fadeOut =
        comma == std::string::npos ? settings.fadeIn : secondsOf(std::string_view(text).substr(comma + 1));
}

std::optional<double> loudnessOf(const std::string& text) {
    if (text == "off") return std::nullopt;
    return decimalWithin(text, -50, -5, "a loudness from -50 to -5 (LUFS) or \"off\"");
}

void addFrames(const std::string& list, std::set<int64_t>& frames) {
    for (size_t start = 0; start <= list.size();) {
        const size_t comma = std::min(list.find(',', start), list.size());
        const auto frame = wholeNumber(std::string_view(list).substr(start, comma - start));
        if (!frame || *frame < 0) throw wrong(list, "a list of frame numbers such as 0,10,20");
        frames.insert(*frame);
        start = comma + 1;
    }
}

}  // namespace

void declareSource(Arguments& arguments, RenderRequest& request, bool takesGroupFile) {
    const std::string help = "An installed template's id or name, a template's folder or a zip of one";
    arguments.word("TEMPLATE", takesGroupFile ? help + "; or a scene-group file" : help,
                   [&](const std::string& value) { request.source = value; });
}

void declareInputs(Arguments& arguments, RenderRequest& request) {
    arguments.option(
        "--text", "KEY=VALUE",
        "Texts that the template asks for; \\n begins a new line, \\\\ is a backslash; up to twice as long "
        "as "
        "there is room for, a text is drawn smaller",
        [&](const std::string& value) {
            JobInputs::Given text = keyAndValue(value, kPair);
            text.value = withLineBreaks(text.value);
            request.inputs.texts.push_back(std::move(text));
        },
        Occurs::AnyNumber);
    arguments.option(
        "--photo", "KEY=FILE",
        "Photos; each is turned upright and cropped to the shape the template wants, so that faces stay",
        [&](const std::string& value) { request.inputs.photos.push_back(keyAndValue(value, kFilePair)); },
        Occurs::AnyNumber);
    arguments.option(
        "--crop", "KEY=x,y,w,h[,angle]",
        "The part of that photo that may be shown: left, top, width and height, 0 to 1 of the upright "
        "picture; with an angle, what lies in that rectangle when it is turned clockwise by so many degrees",
        [&](const std::string& value) { request.inputs.photoParts.push_back(cropOf(value)); },
        Occurs::AnyNumber);
    arguments.option(
        "--focus", "KEY=x,y", "The point that stays in view when that photo is cropped, 0 to 1, y down",
        [&](const std::string& value) { request.inputs.photoParts.push_back(focusOf(value)); },
        Occurs::AnyNumber);
    arguments.option(
        "--video", "KEY=FILE", "Videos; each is turned upright, keeps its speed and is trimmed to its place",
        [&](const std::string& value) { request.inputs.videos.push_back(keyAndValue(value, kFilePair)); },
        Occurs::AnyNumber);
    arguments.option(
        "--video-volume", "KEY=N", "How loud a video's own sound is, 0 to 1; else as the template says",
        [&](const std::string& value) { request.inputs.videoVolumes.push_back(keyAndValue(value, "KEY=N")); },
        Occurs::AnyNumber);
    arguments.option(
        "--video-start", "KEY=S", "Begin so many seconds into that video, its sound too; 0 if not given",
        [&](const std::string& value) { request.inputs.videoStarts.push_back(keyAndValue(value, "KEY=S")); },
        Occurs::AnyNumber);
    arguments.option("--media", "FILE.json",
                     "An object from keys to texts, numbers and paths (relative to the file), or to objects "
                     "{\"file\", \"crop\": {\"x\", \"y\", \"width\", \"height\", \"angle\"}} of a photo and "
                     "{\"file\", \"start\", \"volume\"} of a video; the other options win",
                     [&](const std::string& value) { request.inputs.mediaFile = value; });
}

void declareFormat(Arguments& arguments, RenderRequest& request, Occurs occurs) {
    arguments.option(
        "--size", "WxH", "Size in pixels, even numbers; the template's if not given",
        [&](const std::string& value) { request.size = sizeOf(value); }, occurs);
    arguments.option(
        "--fps", "N", "Frames a second; the template's if not given",
        [&](const std::string& value) {
            request.framesPerSecond = static_cast<int>(numberWithin(value, 1, kMaxFramesPerSecond));
        },
        occurs);
}

void declareFit(Arguments& arguments, RenderRequest& request) {
    arguments.option(
        "--fit", "blur|pad|crop|stretch",
        "A size of another shape than the template's: the whole picture before a blurred copy of "
        "itself or with black beside it, cut, or drawn in that shape, which squashes most. Default: the "
        "template's choice, else blur",
        [&](const std::string& value) {
            request.fit = platform::fitNamed(value);
            if (!request.fit) throw wrong(value, "one of blur, pad, crop, stretch");
        });
}

void declareRenderer(Arguments& arguments, RenderRequest& request) {
    arguments.option(
        "--renderer", "auto|gl|software",
        "What draws: OpenGL alone, or the processor with OpenGL for what only that can draw. auto, if "
        "not given: OpenGL where it has a GPU, else software",
        [&](const std::string& value) {
            const auto renderer = rendererNamed(value);
            if (!renderer) throw wrong(value, "one of auto, gl, software");
            request.renderer = *renderer;
        });
}

void declareJudgement(Arguments& arguments, RenderRequest& request) {
    arguments.flag("--strict", "Refuse what would only be noted: warnings, inputs that are not given",
                   request.isStrict);
    arguments.flag("--force", "Go on in spite of what \"check\" calls an error", request.isForced);
}

void declareMusic(Arguments& arguments, RenderRequest& request) {
    MusicSettings& music = request.musicSettings;
    arguments.option("--music", "FILE|none", "Background music",
                     [&](const std::string& value) { request.music = value; });
    arguments.option("--music-volume", "V",
                     "Volume of the music as a factor, 0 (silent) to 4; 1 if not given",
                     [&](const std::string& value) {
                         music.volume = decimalWithin(value, 0, 4, "a factor from 0 to 4, such as 0.5");
                     });
    arguments.option("--music-start", "S",
                     "Begin so many seconds into the music, also when it begins again; 0 if not given",
                     [&](const std::string& value) { music.start = secondsOf(value); });
    arguments.option(
        "--music-fade", "S|IN,OUT",
        "Fade the music in and out over so many seconds, besides what the mix fades anyway (a video of "
        "more than 5 s over its end); 0 if not given",
        [&](const std::string& value) { setFades(value, music); });
}

void declareVideo(Arguments& arguments, VideoRequest& request) {
    declareMusic(arguments, request);
    arguments.option("--loudness", "N|off",
                     "Bring the finished sound to N LUFS (integrated, EBU R 128), -50 to -5: -14 suits most "
                     "platforms, -23 broadcast; off if not given",
                     [&](const std::string& value) { request.loudness = loudnessOf(value); });
    arguments.option("--bitrate", "B", "Video bits a second: 1500k, 4M; 1500k if not given",
                     [&](const std::string& value) { request.bitRate = bitRateOf(value); });
    arguments.option("--preset", "P",
                     "Speed of the encoder: " + platform::VideoWriter::presets() + "; veryfast if not given",
                     [&](const std::string& value) { request.preset = presetOf(value); });
    arguments.option("--pictures", "DIR", "", [&](const std::string& value) { request.pictures = value; });
    arguments.option(
        "-o,--output", "OUT.mp4", "The video; it appears when it is complete",
        [&](const std::string& value) { request.output = value; }, Occurs::Once);
}

void declareSelection(Arguments& arguments, FrameSelection& selection) {
    arguments.option("--at", "0,10,20", "Only these frames, counted from 0",
                     [&](const std::string& value) { addFrames(value, selection.at); });
    arguments.option("--every", "N", "Only every Nth frame",
                     [&](const std::string& value) { selection.every = numberWithin(value, 1, INT32_MAX); });
}

}  // namespace multiscene::cli
