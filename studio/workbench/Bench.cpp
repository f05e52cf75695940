#include "studio/workbench/Bench.h"

#include <utility>

#include "app/preview/StillTalk.h"
#include "platform/base/Json.h"
#include "studio/api/Problem.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;
using platform::http::Answer;
using platform::http::EventStream;

namespace {

constexpr std::chrono::milliseconds kLook{25};
constexpr std::chrono::seconds kLongestCheck{60};
constexpr int64_t kWidth = 540, kSmallWidth = 270;  // pixels
constexpr size_t kMostFindings = 300, kMostWanted = 200;

}  // namespace

Bench::Bench(const Parts& parts, fs::path folder)
    : parts_(parts),
      folder_(std::move(folder)),
      watch_({folder_}),
      main_(parts, folder_, kWidth, [this](const Value& line) { hear(line); }),
      small_(parts, folder_, kSmallWidth, [this](const Value& line) { hearOfTrials(line); }) {
    main_.openAnew();
    watch();
}

Bench::~Bench() { stop(); }

/// The timers end before this does.
void Bench::stop() {
    *isAlive_ = false;
    wanted_.clear();
    main_.stop();
    small_.stop();
    check_.reset();
    for (const EventStream& stream : streams_) stream.close();
    streams_.clear();
}

// What is saved

void Bench::watch() {
    parts_.timers.after(kLook, [this, alive = isAlive_] {
        if (!*alive) return;
        if (watch_.hasChanged()) save();
        watch();
    });
}

/// The picture first: the rest waits until it can be drawn.
void Bench::save() {
    ++revision_;
    check_.reset();
    main_.openAnew();
    tell("saved", Value::Dictionary{{"revision", revision_}});
}

void Bench::hear(const Value& line) {
    const bool isOpened = line.string("event") == stillTalk::kOpened;
    if (isOpened) opened_ = line;
    refused_ = isOpened ? Value() : line;
    shown_ = isOpened ? revision_ : shown_;
    if (isOpened) askOutline();
    if (isOpened && small_.isRunning()) small_.openAnew();
    check();
    tellState();
}

void Bench::askOutline() {
    main_.ask({{"do", stillTalk::kOutline}}, {[this](const BenchProgram::Answer& answer) {
                                                  outline_ = answer.bytes;
                                                  tell("outline", Value::Dictionary{{"revision", shown_}});
                                              },
                                              [](const Problem&) {}});
}

// What is wrong

std::string Bench::shownPath(const std::string& file) const {
    const std::string folder = folder_.string();
    if (file == folder) return {};
    return file.starts_with(folder + "/") ? file.substr(folder.size() + 1) : file;
}

Value Bench::findingOf(const Value& line) const {
    return Value::Dictionary{{"severity", line.string("severity")}, {"message", line.string("message")},
                             {"remedy", line.string("remedy")},     {"file", shownPath(line.string("file"))},
                             {"key", line.string("key")},           {"line", line.integer("line")}};
}

void Bench::check() {
    ChildProgram::Spec spec = programRun(parts_.settings, {"check", folder_.string()});
    spec.most = kLongestCheck;
    const auto found = std::make_shared<Value::Array>();
    check_ = std::make_unique<ChildProgram>(
        parts_.queue, std::move(spec),
        [this, found](const Value& line) {
            if (line.string("event") == "finding" && found->size() < kMostFindings)
                found->push_back(findingOf(line));
        },
        [this, found, revision = revision_](const ChildProgram::End& end) {
            constexpr int faulty = static_cast<int>(platform::ErrorKind::Template);
            const auto ended = std::move(check_);  // this is part of it
            if (end.exitCode != 0 && end.exitCode != faulty) return;
            findings_ = *found;
            checked_ = revision;
            if (opened_ && !small_.isRunning()) small_.openAnew();
            tellState();
        });
}

// What is told

Value Bench::state() const {
    Value::Dictionary state{{"folder", folder_.string()},
                            {"name", folder_.filename().string()},
                            {"revision", revision_},
                            {"shown", shown_},
                            {"video", Value()},
                            {"trials", opened_["trials"].array()},
                            {"moments", moments_.dictionary()},
                            {"problem", Value()},
                            {"findings", findings_},
                            {"checked", checked_}};
    if (opened_) {
        Value::Dictionary video;
        for (const char* name : {"frames", "framesPerSecond", "width", "height"})
            video[name] = opened_.integer(name);
        state["video"] = std::move(video);
    }
    if (refused_)
        state["problem"] = Value::Dictionary{{"message", refused_.string("message")},
                                             {"file", shownPath(refused_.string("file"))},
                                             {"key", refused_.string("key")}};
    return state;
}

void Bench::tellState() { tell("state", state()); }

void Bench::tell(const std::string& name, const Value& data) {
    const platform::http::Event event{.data = platform::jsonText(data), .name = name, .id = {}};
    std::erase_if(streams_, [&](const EventStream& stream) { return !stream.send(event); });
}

void Bench::listen(EventStream stream) {
    streams_.push_back(std::move(stream));
    tellState();
}

Answer Bench::outline() const {
    if (outline_.empty()) throw notFound("outline yet");
    return Answer::text(200, outline_, "application/json");
}

// Pictures

BenchProgram::Ends Bench::answering(std::shared_ptr<Responder> responder, const char* contentType) {
    return {[responder, contentType](const BenchProgram::Answer& answer) {
                responder->answer(answer.bytes.empty() ? Answer(204)
                                                       : Answer::text(200, answer.bytes, contentType)
                                                             .with("X-Frame", std::to_string(answer.frame)));
            },
            [responder](const Problem& problem) { responder->answer(answerOf(problem)); }};
}

void Bench::still(int64_t frame, const std::string& trial, Responder responder) {
    main_.ask({{"do", stillTalk::kStill}, {"frame", frame}, {"trial", trial}},
              answering(std::make_shared<Responder>(std::move(responder)), "image/jpeg"));
}

void Bench::values(int64_t frame, Responder responder) {
    main_.ask({{"do", stillTalk::kTrace}, {"frame", frame}},
              answering(std::make_shared<Responder>(std::move(responder)), "application/json"));
}

void Bench::trial(const std::string& name, int64_t frame, Responder responder) {
    if (wanted_.size() >= kMostWanted) throw Problem(429, "too-many", "so many trials wait already");
    wanted_.push_back({name, frame, std::make_shared<Responder>(std::move(responder))});
    drawNextTrial();
}

/// The program would draw the newest alone.
void Bench::drawNextTrial() {
    while (!isDrawing_ && !wanted_.empty()) {
        const Wanted wanted = std::move(wanted_.front());
        wanted_.pop_front();
        if (wanted.responder->isGone()) continue;
        isDrawing_ = true;
        auto ends = answering(wanted.responder, "image/jpeg");
        const auto then = [this](const auto& first) {
            return [this, first](const auto& result) {
                first(result);
                isDrawing_ = false;
                drawNextTrial();
            };
        };
        small_.ask({{"do", stillTalk::kStill}, {"frame", wanted.frame}, {"trial", wanted.trial}},
                   {then(ends.said), then(ends.failed)});
    }
}

/// When an input is seen is found out beside the trials: it plays the whole once.
void Bench::hearOfTrials(const Value& line) {
    const std::string event = line.string("event");
    if (event == stillTalk::kOpened) return small_.findMoments();
    if (event != stillTalk::kMoments) return;
    moments_ = line["moments"];
    tellState();
}

}  // namespace multiscene::studio
