#include "studio/workbench/BenchProgram.h"

#include <sys/stat.h>

#include <utility>

#include "app/preview/StillTalk.h"
#include "studio/process/ChildProblem.h"

namespace multiscene::studio {

using platform::Error;
using platform::ErrorKind;
using platform::Value;

namespace {

uint64_t inodeOf(const std::filesystem::path& folder) {
    struct stat info {};
    return ::stat(folder.c_str(), &info) == 0 ? info.st_ino : 0;
}

Problem problemOf(const Value& said) {
    const bool isTheirs = said.integer("code") == static_cast<int64_t>(ErrorKind::Template);
    return Problem(Error(isTheirs ? ErrorKind::Template : ErrorKind::Input, said.string("message"), "",
                         said.string("key")));
}

}  // namespace

BenchProgram::BenchProgram(const Parts& parts, std::filesystem::path folder, int64_t width, News news)
    : parts_(parts), folder_(std::move(folder)), width_(width), news_(std::move(news)) {}

BenchProgram::~BenchProgram() { stop(); }

void BenchProgram::stop() {
    program_.reset();
    failAll(Problem(503, "preview-lost", "the preview was lost; ask again"));
}

void BenchProgram::failAll(const Problem& problem) {
    for (const auto& [id, ends] : std::exchange(asked_, {})) ends.failed(problem);
}

void BenchProgram::start() {
    hasOpened_ = false;
    inode_ = inodeOf(folder_);
    program_ = std::make_unique<HeldProgram>(parts_);
    program_->listen([this](const Value& line, const std::string& bytes) { hear(line, bytes); },
                     [this](const ChildProgram::End& ended) { end(ended); });
    program_->ask(Value::Dictionary{{"do", stillTalk::kOpen},
                                    {"template", folder_.string()},
                                    {"values", Value::Dictionary()},
                                    {"width", width_},
                                    {"folder", ""},
                                    {"stays", true}});
}

/// Of a folder that has taken the place of the other, what runs already may read nothing.
void BenchProgram::openAnew() {
    if (!hasOpened_ || inodeOf(folder_) != inode_) stop();
    if (!program_) return start();
    program_->ask(Value::Dictionary{{"do", stillTalk::kOpen}});
}

void BenchProgram::ask(Value::Dictionary line, Ends ends) {
    if (!program_) start();
    line["id"] = ++lastId_;
    asked_.emplace(lastId_, std::move(ends));
    program_->ask(Value(std::move(line)));
}

void BenchProgram::findMoments() {
    program_->ask(Value::Dictionary{{"do", stillTalk::kMoments}, {"id", ++lastId_}});
}

void BenchProgram::hear(const Value& line, const std::string& bytes) {
    const std::string event = line.string("event");
    if (event == stillTalk::kOpened || event == stillTalk::kRefused || event == stillTalk::kMoments) {
        hasOpened_ = hasOpened_ || event == stillTalk::kOpened;
        return news_(line);
    }
    const auto found = asked_.find(line.integer("id"));
    if (found == asked_.end()) return;
    const Ends ends = std::move(asked_.extract(found).mapped());
    if (event == stillTalk::kProblem) return ends.failed(problemOf(line));
    ends.said({line.integer("frame"), event == stillTalk::kOvertaken ? std::string() : bytes});
}

/// It never ends by itself but for a fault, of which the template is the likely cause.
void BenchProgram::end(const ChildProgram::End& ended) {
    program_.reset();
    const Error error = errorOf(ended);
    news_(Value::Dictionary{{"event", stillTalk::kRefused},
                            {"code", error.exitCode()},
                            {"message", error.message()},
                            {"file", ""},
                            {"key", error.key()}});
    failAll(Problem(error));
}

}  // namespace multiscene::studio
