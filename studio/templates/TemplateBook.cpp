#include "studio/templates/TemplateBook.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "platform/base/Paths.h"
#include "studio/process/ChildProblem.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr std::chrono::seconds kMostSeconds{60};
constexpr size_t kMostTemplates = 10'000;
constexpr int kMostAgain = 5;
/// Below the data home.
constexpr const char* kInstalled = "qvMultiSceneRender";

std::string stampOf(const fs::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return "-";
    return std::to_string(info.st_ino) + "." + std::to_string(info.st_size) + "." +
           std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec);
}

/// One visible folder, and no way to another.
bool isFolderName(const std::string& name) {
    return !name.empty() && name.front() != '.' && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace

const char* BookedTemplate::state() const {
    return told.boolean("installed") ? "installed" : told.boolean("sample") ? "sample" : "offered";
}

TemplateBook::TemplateBook(const Parts& parts) : parts_(parts) { read(); }
TemplateBook::~TemplateBook() = default;

/// What installing, removing and fetching the server's list change.
std::string TemplateBook::stamp() const {
    const fs::path& home = parts_.settings.home;
    const fs::path installed = home / kInstalled;
    std::string all;
    for (const fs::path& path :
         {installed / "data" / "sceneDataBase.db", installed / "data" / "sceneDataBase.db-wal",
          installed / "scene", home / "downloadDirectory" / "data", home / "settings.json"})
        all += stampOf(path) + " ";
    return all;
}

void TemplateBook::refresh(Ready ready, Failed failed) {
    if (isRead_ && !reader_ && stamp() == readAt_) return ready();
    waiting_.push_back({std::move(ready), std::move(failed)});
    if (!reader_) read();
}

void TemplateBook::forget() {
    readAt_.clear();
    readingAt_.clear();
    if (!reader_) read();
}

void TemplateBook::stop() {
    isStopped_ = true;
    if (reader_) reader_->cancel();
}

void TemplateBook::read() {
    if (isStopped_) return;
    coming_.clear();
    readingAt_ = stamp();
    ChildProgram::Spec run = programRun(parts_.settings, {"templates", "list"});
    run.most = kMostSeconds;
    reader_ = std::make_unique<ChildProgram>(
        parts_.queue, std::move(run), [this](const Value& line) { hear(line); },
        [this](const ChildProgram::End& end) { heard(end); });
}

void TemplateBook::hear(const Value& line) {
    if (line.string("event") == "done") isTimelineShared_ = line.boolean("timelineShare");
    if (line.string("event") != "template" || coming_.size() >= kMostTemplates) return;
    coming_.push_back({line.integer("id"), line, folderOf(line)});
}

/// Not what the program tells: what it has read might have told it anything.
fs::path TemplateBook::folderOf(const Value& told) const {
    const std::string name = told.string("name");
    if (!isFolderName(name)) return {};
    if (told.boolean("installed")) return parts_.settings.home / kInstalled / "scene" / name;
    return told.boolean("sample") ? platform::resourcesFolder() / "templates" / name : fs::path();
}

void TemplateBook::heard(const ChildProgram::End& end) {
    const auto ended = std::move(reader_);
    const bool isWell = end.exitCode == 0;
    if (isWell) {
        all_ = std::move(coming_);
        isRead_ = true;
        readAt_ = readingAt_;
    }
    // Who asked after something had changed shall not hear of before.
    if (isWell && !waiting_.empty() && stamp() != readAt_ && ++again_ < kMostAgain) return read();
    again_ = 0;
    for (Waiter& waiter : std::exchange(waiting_, {}))
        isWell ? waiter.ready() : waiter.failed(problemOf(end));
}

const BookedTemplate* TemplateBook::find(int64_t id) const {
    const auto found =
        std::find_if(all_.begin(), all_.end(), [&](const auto& each) { return each.id == id; });
    return found == all_.end() ? nullptr : &*found;
}

std::optional<TemplateFacts> TemplateBook::facts(int64_t id, const std::string& language) const {
    if (!isRead_)
        throw platform::Error(platform::ErrorKind::Transient, "the templates have not been read yet");
    const BookedTemplate* found = find(id);
    if (!found || found->folder.empty()) return std::nullopt;
    const Value& told = found->told;
    TemplateFacts facts;
    facts.id = id;
    facts.title = found->title(language);
    // By its number an installed one is kept from being exchanged while it is played.
    facts.source = told.boolean("installed") ? std::to_string(id) : found->folder.string();
    facts.folder = found->folder.string();
    facts.frames = told.integer("frames");
    facts.framesPerSecond = told.int32("framesPerSecond");
    facts.width = told.int32("width");
    facts.height = told.int32("height");
    for (const Value& input : told.array("inputs"))
        facts.inputs.push_back({input.string("key"), input.string("kind"),
                                input["placeholders"].string(language), input.integer("maxCharacters"),
                                input.integer("maxLines")});
    return facts;
}

}  // namespace multiscene::studio
