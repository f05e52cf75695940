#include "studio/previews/PreviewSession.h"

#include <unistd.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "app/preview/StillTalk.h"
#include "platform/base/Json.h"
#include "platform/base/PrivateFolder.h"
#include "studio/api/Problem.h"
#include "studio/jobs/JobRequest.h"
#include "studio/process/ChildProblem.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::Value;
using platform::http::Answer;
using platform::http::Responder;

namespace {

constexpr std::chrono::milliseconds kMomentsPatience{700};  // an answer waits for them no longer
constexpr size_t kMostFrames = 400;                         // of a strip that is kept
constexpr int kMostLost = 2;                                // programs that are gone before one is told

Error errorOf(const Value& said) {
    const auto code = said.integer("code");
    ErrorKind kind = ErrorKind::Failed;
    for (const ErrorKind each : {ErrorKind::Template, ErrorKind::Input, ErrorKind::Transient})
        if (code == static_cast<int64_t>(each)) kind = each;
    return Error(kind, said.string("message"), "", said.string("key"));
}

Problem problemOf(const Value& said) {
    Problem problem(errorOf(said));
    const std::string key = said.string("key");
    if (!key.empty()) problem.errors = {{"/values/" + key, key, said.string("message")}};
    return problem;
}

Problem lost() {
    Problem problem(503, "preview-lost", "the preview was lost; ask again");
    problem.retryAfter = 1;
    return problem;
}

Answer picture(const std::string& bytes) { return Answer::text(200, bytes, "image/jpeg"); }

}  // namespace

PreviewSession::PreviewSession(const Parts& parts, Opening opening, UploadStore& uploads, Counters& counters)
    : parts_(parts), opening_(std::move(opening)), uploads_(uploads), counters_(counters) {
    platform::makePrivateFolder(opening_.folder);
}

PreviewSession::~PreviewSession() {
    *isAlive_ = false;
    failAll(lost());
    program_.reset();
    removeQuietly(opening_.folder);
}

std::unique_ptr<HeldProgram> PreviewSession::dropProgram() {
    failAll(lost());
    frames_.clear();  // as many are kept as there are programs
    return std::move(program_);
}

void PreviewSession::failAll(const Problem& problem) {
    for (Responder& each : std::exchange(opens_, {})) each.answer(answerOf(problem));
    for (auto& [id, each] : std::exchange(stills_, {})) each.responder.answer(answerOf(problem));
    if (strip_) endStrip(false);
}

// What is asked

void PreviewSession::start(const Value& media) {
    media_ = media;
    program_ = makeProgram_();
    program_->listen([this](const Value& line, const std::string& bytes) { hear(line, bytes); },
                     [this](const ChildProgram::End& ended) { end(ended); });
    ask({{"do", stillTalk::kOpen},
         {"template", opening_.facts.source},
         {"values", media_},
         {"width", opening_.width},
         {"folder", opening_.folder.string()}});
    if (!opening_.moments) ask({{"do", stillTalk::kMoments}, {"id", ++lastId_}});
}

void PreviewSession::ask(Value::Dictionary line) { program_->ask(Value(std::move(line))); }

/// The files that values name, in the preview's own folder: its program reads no other uploads.
Value PreviewSession::mediaOf(const Value& values) {
    Value::Dictionary media;
    for (const auto& [key, value] : values.dictionary()) {
        if (value.isString()) {
            media[key] = value;
            continue;
        }
        const auto upload = uploads_.find(value.string("upload"), opening_.session);
        if (!upload) continue;
        Value::Dictionary entry{{"file", linked(*upload).string()}};
        for (const char* name : {"crop", "start", "volume"})
            if (value.has(name)) entry[name] = value[name];
        media[key] = Value(std::move(entry));
    }
    return media;
}

fs::path PreviewSession::linked(const Upload& upload) const {
    const fs::path file = uploads_.fileOf(upload);
    const fs::path link = opening_.folder / (upload.id + file.extension().string());
    std::error_code failure;
    if (!fs::exists(link, failure)) fs::create_hard_link(file, link, failure);
    if (failure) fs::copy_file(file, link, fs::copy_options::skip_existing, failure);
    return link;
}

void PreviewSession::open(const Value& values, Responder& responder) {
    usedAt_ = Clock::now();
    values_ = values;
    if (!program_) start(mediaOf(values));
    opens_.push_back(std::move(responder));
}

void PreviewSession::still(const Value& values, int64_t frame, Responder& responder) {
    usedAt_ = Clock::now();
    request::judgeValues(values, opening_.facts, uploads_, opening_.session);
    const Value media = mediaOf(values);
    values_ = values;
    if (!program_) start(media);
    const int64_t id = ++lastId_;
    askStill(id, stills_.emplace(id, Still{std::move(responder), frame, media}).first->second);
}

void PreviewSession::askStill(int64_t id, const Still& still) {
    ask({{"do", stillTalk::kStill}, {"id", id}, {"frame", still.frame}, {"values", still.media}});
}

void PreviewSession::strip(int64_t every, platform::http::EventStream stream) {
    usedAt_ = Clock::now();
    if (strip_) endStrip(false);
    if (!program_) start(mediaOf(values_));
    frames_.clear();
    const auto least = static_cast<int64_t>(opening_.facts.frames / static_cast<int64_t>(kMostFrames)) + 1;
    strip_ = Strip{++lastId_, std::max(every, least), std::move(stream)};
    askStrip();
}

void PreviewSession::askStrip() {
    ask({{"do", stillTalk::kStrip}, {"id", strip_->id}, {"every", strip_->every}});
}

const std::string* PreviewSession::frame(int64_t number) const {
    const auto found = frames_.find(number);
    return found == frames_.end() ? nullptr : &found->second;
}

Value PreviewSession::value() const {
    Value::Dictionary moments;
    if (opening_.moments)
        for (const auto& [key, frame] : *opening_.moments) moments[key] = frame;
    return Value::Dictionary{{"id", opening_.id},
                             {"frames", opened_.integer("frames")},
                             {"framesPerSecond", opened_.integer("framesPerSecond")},
                             {"width", opened_.integer("width")},
                             {"height", opened_.integer("height")},
                             {"moments", moments}};
}

// What the program says

void PreviewSession::hear(const Value& line, const std::string& bytes) {
    const std::string event = line.string("event");
    const int64_t id = line.integer("id");
    if (event == stillTalk::kOpened) {
        hearOpened(line);
    } else if (event == stillTalk::kMoments) {
        hearMoments(line);
    } else if (event == stillTalk::kStill) {
        answerStill(id, picture(bytes).with("X-Frame", std::to_string(line.integer("frame"))));
    } else if (event == stillTalk::kOvertaken) {
        answerStill(id, Answer(204));
    } else if (event == stillTalk::kProblem) {
        answerStill(id, answerOf(problemOf(line)));
    } else if (event == stillTalk::kFrame) {
        hearFrame(line, bytes);
    } else if (event == stillTalk::kStrip && strip_ && strip_->id == id) {
        endStrip(line.boolean("isWhole"));
    }
}

void PreviewSession::hearOpened(const Value& line) {
    opened_ = line;
    if (opening_.moments) return answerOpens();
    parts_.timers.after(kMomentsPatience, [this, alive = isAlive_] {
        if (*alive) answerOpens();
    });
}

void PreviewSession::hearMoments(const Value& line) {
    Moments moments;
    for (const auto& input : opening_.facts.inputs)
        if (line["moments"].has(input.key)) moments[input.key] = line["moments"].integer(input.key);
    opening_.moments = moments;
    if (onMoments_) onMoments_(moments);
    if (!opened_.isNone()) answerOpens();
}

void PreviewSession::hearFrame(const Value& line, const std::string& bytes) {
    if (!strip_ || strip_->id != line.integer("id") || frames_.size() >= kMostFrames) return;
    const int64_t number = line.integer("frame");
    frames_[number] = bytes;
    const std::string url = "/api/v1/previews/" + opening_.id + "/frames/" + std::to_string(number) +
                            ".jpg?v=" + std::to_string(strip_->id);
    strip_->stream.send({.data = platform::jsonText(Value::Dictionary{{"frame", number}, {"url", url}}),
                         .name = "frame",
                         .id = {}});
}

void PreviewSession::endStrip(bool isWhole) {
    strip_->stream.send(
        {.data = platform::jsonText(Value::Dictionary{{"isWhole", isWhole}}), .name = "end", .id = {}});
    strip_->stream.close();
    strip_.reset();
}

void PreviewSession::answerStill(int64_t id, Answer answer) {
    const auto found = stills_.find(id);
    if (found == stills_.end()) return;
    constexpr int isPicture = 200;
    if (answer.status() == isPicture)
        counters_.stills.add(std::chrono::duration<double>(Clock::now() - found->second.asked).count());
    found->second.responder.answer(std::move(answer));
    stills_.erase(found);
    lost_ = 0;
}

void PreviewSession::answerOpens() {
    for (Responder& each : std::exchange(opens_, {}))
        each.answer(json(201, value()).with("Location", "/api/v1/previews/" + opening_.id));
}

/// It never ends by itself but for a fault. The next one may be gone as well: the one that waits ahead dies
/// of the same want of memory.
void PreviewSession::end(const ChildProgram::End& ended) {
    ++counters_.workerExits[{"preview", causeOf(ended)}];
    program_.reset();
    opened_ = {};
    const bool isTheirs = ended.exitCode == static_cast<int>(ErrorKind::Template) ||
                          ended.exitCode == static_cast<int>(ErrorKind::Input);
    if (isTheirs && ended.error) return failAll(problemOf(ended.error));
    if (++lost_ > kMostLost) return failAll(lost());
    if (!isBusy() && !strip_) return;
    try {
        askAgain();
    } catch (const std::exception&) {  // not even a connection to one
        program_.reset();
        failAll(lost());
    }
}

void PreviewSession::askAgain() {
    start(Value(media_));
    for (const auto& [id, still] : stills_) askStill(id, still);
    if (strip_) askStrip();
}

}  // namespace multiscene::studio
