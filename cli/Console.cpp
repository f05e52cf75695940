#include "cli/Console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>

#include "cli/FindingFields.h"
#include "cli/Table.h"
#include "platform/base/Clock.h"
#include "platform/base/Json.h"
#include "platform/base/Log.h"

namespace multiscene::cli {

using platform::Value;

namespace {

constexpr double kPlainInterval = 2;      // seconds between lines of progress that nobody watches
constexpr double kWatchedInterval = 0.1;  // between redraws of the bar of a download

template <typename... Arguments>
std::string format(const char* pattern, Arguments... arguments) {
    char text[256];
    std::snprintf(text, sizeof text, pattern, arguments...);
    return text;
}

int terminalWidth() {
    winsize size{};
    constexpr int usual = 80;
    return ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

std::string remainingText(double seconds) {
    if (seconds < 0) return "";
    const auto whole = static_cast<long>(std::ceil(seconds));
    return format(", %ld:%02ld left", whole / 60, whole % 60);
}

std::string progressText(const JobProgress& progress) {
    const std::string total =
        progress.totalFrames > 0 ? format(" of %lld", static_cast<long long>(progress.totalFrames)) : "";
    return format("frame %lld", static_cast<long long>(progress.frame)) + total +
           format(", %.1f frames a second", progress.framesPerSecond) +
           remainingText(progress.secondsRemaining);
}

std::string byteText(double bytes) {
    constexpr double kilo = 1024, mega = kilo * kilo;
    return bytes < mega ? format("%.0f kB", bytes / kilo) : format("%.1f MB", bytes / mega);
}

/// Below 0 when nobody can tell.
double secondsLeft(uint64_t received, uint64_t total, double rate) {
    return total > received && rate > 0 ? static_cast<double>(total - received) / rate : -1;
}

std::string downloadText(uint64_t received, uint64_t total, double rate) {
    const std::string ofAll = total > 0 ? " of " + byteText(static_cast<double>(total)) : "";
    return byteText(static_cast<double>(received)) + ofAll + ", " + byteText(rate) + "/s" +
           remainingText(secondsLeft(received, total, rate));
}

double share(int64_t done, int64_t total) {
    return total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0;
}

/// " (node photo in DIR/scene.plist)".
std::string placeOf(const RenderReport::Entry& entry) {
    std::string place = entry.node.empty() ? "" : "node " + entry.node;
    if (!entry.scene.empty()) place += (place.empty() ? "in " : " in ") + entry.scene;
    return place.empty() ? place : " (" + place + ")";
}

/// "left out gone.png: missing file (…)", "film.mp4 has 25 frames a second, … (…)".
std::string describe(const RenderReport::Entry& entry) {
    const std::string name = entry.name.empty() ? "a file without a name" : entry.name;
    return printable((entry.isLeftOut ? "left out " + name + ": " : name + " ") + entry.what +
                     placeOf(entry));
}

std::string contentText(const JobSummary& summary) {
    if (summary.pictures > 0)
        return format("%lld %s", static_cast<long long>(summary.pictures),
                      summary.pictures == 1 ? "picture" : "pictures");
    return format("%lld frames, %.2f s at %d frames a second", static_cast<long long>(summary.frames),
                  summary.videoSeconds(), summary.format.framesPerSecond);
}

Value entriesValue(const std::vector<RenderReport::Entry>& entries) {
    Value::Array list;
    for (const RenderReport::Entry& entry : entries)
        list.emplace_back(Value::Dictionary{
            {"what", entry.what}, {"name", entry.name}, {"scene", entry.scene}, {"node", entry.node}});
    return list;
}

Value missingValue(const JobSummary& summary) {
    return Value::Array(summary.missingInputs.begin(), summary.missingInputs.end());
}

Value decibelValue(const std::optional<double>& decibels) { return decibels ? Value(*decibels) : Value(); }

/// Null when the video is silent.
Value soundValue(const JobSummary& summary) {
    if (!summary.sound) return {};
    const platform::AudioMixReport& sound = *summary.sound;
    return Value::Dictionary{{"loudnessBefore", decibelValue(sound.before.integrated)},
                             {"loudness", decibelValue(sound.after.integrated)},
                             {"truePeakBefore", decibelValue(sound.before.truePeak)},
                             {"truePeak", decibelValue(sound.after.truePeak)},
                             {"gain", sound.gain},
                             {"limited", sound.isLimited}};
}

/// What was done to the sound; empty when nothing was.
std::string soundText(const JobSummary& summary) {
    if (!summary.sound) return {};
    const platform::AudioMixReport& sound = *summary.sound;
    const auto loudness = [](const platform::Loudness& measured) {
        return measured.integrated ? format("%.1f LUFS", *measured.integrated) : std::string("silent");
    };
    std::string text;
    if (summary.wantedLoudness)
        text = "sound: " + loudness(sound.after) + format(" (%+.1f dB), mixed at ", sound.gain) +
               loudness(sound.before);
    if (sound.isLimited)
        text += (text.empty() ? "sound: " : "; ") +
                format("peaks limited to %.0f dB", platform::kHighestTruePeak);
    return text;
}

std::string drawnText(const DrawnBy& drawn) {
    if (drawn.renderer == "gl") return "drawn by OpenGL: " + drawn.openGL;
    const std::string text = "drawn in software";
    return drawn.openGL.empty() ? text : text + ", by OpenGL what only that draws: " + drawn.openGL;
}

Value::Dictionary summaryFields(const JobSummary& summary) {
    return {{"output", summary.output.string()},
            {"frames", summary.frames},
            {"pictures", summary.pictures},
            {"width", summary.format.width},
            {"height", summary.format.height},
            {"framesPerSecond", summary.format.framesPerSecond},
            {"videoSeconds", summary.videoSeconds()},
            {"seconds", summary.wallSeconds},
            {"renderer", summary.drawnBy.renderer},
            {"openGL", summary.drawnBy.openGL.empty() ? Value() : Value(summary.drawnBy.openGL)},
            {"sound", soundValue(summary)},
            {"skipped", entriesValue(summary.skipped)},
            {"usedOtherwise", entriesValue(summary.usedOtherwise)},
            {"missingInputs", missingValue(summary)}};
}

void logStage(const char* name, const StageTime& time) {
    platform::log::info(format("%-9s %8.3f s CPU %8.3f s", name, time.cpuSeconds, time.wallSeconds));
}

void logStatistics(const JobSummary& summary) {
    const FrameStatistics& times = summary.statistics;
    logStage("decode", times.decode);
    logStage("update", times.update);
    logStage("draw", times.draw);
    logStage("paint", times.paint);
    logStage("hand over", times.handOver);
    logStage("complete", times.complete);
    logStage("wait", times.wait);
    platform::log::info(format("convert   %8.3f s CPU", summary.encoder.convertSeconds));
    platform::log::info(format("encode    %8.3f s CPU", summary.encoder.encodeSeconds));
}

}  // namespace

Console::Console(bool isJson) : isJson_(isJson), isTerminal_(::isatty(STDOUT_FILENO) == 1) {}

void Console::write(const std::string& text) {
    // One call, so that lines of several threads do not mix.
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0) return;
    // Who closes a pipe has read enough.
    if (errno != EPIPE) writeFailure_ = errno;
}

void Console::requireWritten() const {
    if (const int failure = writeFailure_)
        throw platform::errnoError(failure, "cannot write", "standard output");
}

void Console::event(const std::string& name, Value::Dictionary fields) {
    if (!isJson_) return;
    fields["event"] = name;
    line(platform::jsonText(fields));
}

void Console::jobProgress(const JobProgress& progress) {
    if (isReserved_) return;
    if (isJson_)
        event("progress", {{"frame", progress.frame},
                           {"total", progress.totalFrames},
                           {"framesPerSecond", progress.framesPerSecond},
                           {"secondsRemaining",
                            progress.secondsRemaining < 0 ? Value() : Value(progress.secondsRemaining)}});
    else if (isTerminal_)
        drawBar(share(progress.frame, progress.totalFrames), progressText(progress));
    else
        printProgress(progress);
}

void Console::finding(const Finding& finding) {
    if (!isJson_) return line(printable(multiscene::describe(finding)));  // a template may hold anything
    event("finding", fieldsOf(finding));
}

void Console::status(const std::string& text) {
    if (isJson_) return event("status", {{"message", text}});
    clearBar();
    line(printable(text));
}

void Console::downloadProgress(uint64_t received, uint64_t total, double seconds) {
    const double now = platform::monotonicSeconds();
    const double interval = isJson_ || isTerminal_ ? kWatchedInterval : kPlainInterval;
    if (received != total && now - printedSeconds_ < interval) return;
    printedSeconds_ = now;
    const double rate = seconds > 0 ? static_cast<double>(received) / seconds : 0;
    const double left = secondsLeft(received, total, rate);
    const std::string text = downloadText(received, total, rate);
    if (isJson_)
        event("download", {{"bytes", static_cast<int64_t>(received)},
                           {"totalBytes", static_cast<int64_t>(total)},
                           {"bytesPerSecond", rate},
                           {"secondsRemaining", left < 0 ? Value() : Value(left)}});
    else if (isTerminal_)
        drawBar(share(static_cast<int64_t>(received), static_cast<int64_t>(total)), text);
    else
        line(text);
}

void Console::drawBar(double done, const std::string& progress) {
    const std::string text = " " + progress;
    const int room = std::clamp(terminalWidth() - static_cast<int>(text.size()) - 3, 0, 40);
    const int full = std::clamp(static_cast<int>(done * room), 0, room);
    std::printf("\r[%s%s]%s\033[K", std::string(full, '#').c_str(), std::string(room - full, '.').c_str(),
                text.c_str());
    std::fflush(stdout);
    hasBar_ = true;
}

void Console::printProgress(const JobProgress& progress) {
    const double now = platform::monotonicSeconds();
    const bool isLast = progress.frame == progress.totalFrames;
    if (progress.frame == 0 || progress.frame == printedFrame_ ||
        (!isLast && now - printedSeconds_ < kPlainInterval))
        return;
    printedSeconds_ = now;
    printedFrame_ = progress.frame;
    line(progressText(progress));
}

void Console::clearBar() {
    if (!hasBar_) return;
    std::fputs("\r\033[K", stdout);
    std::fflush(stdout);
    hasBar_ = false;
}

void Console::jobFinding(const Finding& each) {
    if (!isReserved_) return finding(each);
    std::fprintf(stderr, "note: %s\n", printable(multiscene::describe(each)).c_str());
}

/// Keys and names in it are a template's.
void Console::jobNote(const std::string& text) {
    clearBar();
    if (isReserved_)
        std::fprintf(stderr, "note: %s\n", printable(text).c_str());
    else if (isJson_)
        event("note", {{"message", text}});
    else
        line("note: " + printable(text));
}

void Console::jobDone(const JobSummary& summary) {
    clearBar();
    if (isReserved_) {
        for (const auto* entries : {&summary.skipped, &summary.usedOtherwise})
            for (const RenderReport::Entry& entry : *entries) jobNote(describe(entry));
    } else if (isJson_) {
        event("done", summaryFields(summary));
    } else {
        printSummary(summary);
    }
    logStatistics(summary);
}

void Console::printSummary(const JobSummary& summary) {
    line("made " + summary.output.string() + ": " + contentText(summary) +
         format(", %dx%d, in %.1f s", summary.format.width, summary.format.height, summary.wallSeconds));
    line(drawnText(summary.drawnBy));
    if (const std::string sound = soundText(summary); !sound.empty()) line(sound);
    for (const RenderReport::Entry& entry : summary.skipped) line(describe(entry));
    for (const RenderReport::Entry& entry : summary.usedOtherwise) line("note: " + describe(entry));
}

void Console::error(const platform::Error& error) {
    clearBar();
    if (isJson_)
        event("error", {{"code", error.exitCode()},
                        {"message", error.message()},
                        {"file", error.file()},
                        {"key", error.key()}});
    std::fprintf(stderr, "multiscene: %s\n", printable(error.what()).c_str());
}

}  // namespace multiscene::cli
