#include "app/job/PreparedGroup.h"

#include <algorithm>
#include <cstdio>

#include "app/job/JobFormat.h"
#include "app/job/JobJudgement.h"
#include "app/job/UserValues.h"
#include "other/QVMultiSceneGropPlistFileManager.h"
#include "platform/audio/AudioFile.h"
#include "platform/base/Activity.h"
#include "platform/base/Error.h"
#include "platform/base/Paths.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::Value;

namespace {

using Notes = std::vector<std::string>;

constexpr const char* kGroupName = "sceneGroup.plist";

/// The fence is open for the program's resources and the job's own folder; what is played adds its files.
std::shared_ptr<Playback> playbackIn(const JobFolder& job) {
    auto playback = std::make_shared<Playback>();
    playback->gate().allowFolder(platform::resourcesFolder());
    playback->gate().allowFolder(job.path());
    playback->textCopy().setFolder(job.path());
    return playback;
}

Playable open(const RenderRequest& request, const JobFolder& job, Playback& playback) {
    return request.isSceneGroupFile ? openSceneGroupFile(request.source, playback)
                                    : openPlayable(request.source, job, playback);
}

void requireWithin(const MusicSettings& settings, const platform::AudioFile& music, const std::string& path) {
    const double length = CMTimeGetSeconds(music.duration());
    if (settings.start < length) return;
    char text[64];
    std::snprintf(text, sizeof text, "the music lasts %.2f s and cannot start at %g s", length,
                  settings.start);
    throw Error(ErrorKind::Usage, text, path, "--music-start");
}

std::string userMusic(const std::string& path, const MusicSettings& settings, FileGate& gate) {
    gate.allowFile(path);
    FileGate::Opened opened = gate.open(path);
    if (opened.verdict != FileGate::Verdict::Allowed)
        throw Error(ErrorKind::Input, describe(opened.verdict), path, "--music");
    requireWithin(settings, platform::AudioFile(std::move(opened.file), path, ErrorKind::Input), path);
    return std::filesystem::absolute(path).lexically_normal().string();
}

std::string templateMusic(PreparedGroup& prepared, const MusicSettings& settings, Notes& notes) {
    const std::string& path = prepared.playable.musicPath;
    if (path.empty()) return {};
    FileGate::Opened opened = prepared.playback->gate().open(path);
    if (opened.verdict == FileGate::Verdict::Missing) {
        notes.push_back("the template's music is missing: " + path);
        return {};
    }
    if (opened.verdict != FileGate::Verdict::Allowed)
        throw Error(ErrorKind::Template, describe(opened.verdict), path, "bgAudioPath");
    requireWithin(settings, platform::AudioFile(std::move(opened.file), path), path);
    return path;
}

std::string musicOf(const RenderRequest& request, PreparedGroup& prepared, Notes& notes) {
    if (!request.music) return templateMusic(prepared, request.musicSettings, notes);
    if (*request.music == "none") return {};
    return userMusic(*request.music, request.musicSettings, prepared.playback->gate());
}

/// What the group macros stand for. A group file's resources lie beside it; a template's group is the job's.
void shareFolders(const PreparedGroup& prepared, const JobFolder& job) {
    auto& settings = prepared.playback->settings();
    const bool isFile = prepared.playable.isGroupFile;
    const std::filesystem::path& folder = isFile ? prepared.playable.folder : job.path();
    settings.setCurrentSceneGroupPlistPathFloder(folder.string() + "/");
    settings.setCurrentSceneGroupUserResourcePathFloder(folder.string() + "/");
}

/// "not given, so their places stay empty: title, photo".
std::string missingNote(const std::vector<std::string>& keys) {
    std::string note;
    for (const std::string& key : keys) note += (note.empty() ? "" : ", ") + key;
    return (keys.size() == 1 ? "not given, so its place stays empty: "
                             : "not given, so their places stay empty: ") +
           note;
}

void addNotes(const PreparedGroup& prepared, const RenderRequest& request, Notes& notes) {
    if (!prepared.missingInputs.empty()) notes.push_back(missingNote(prepared.missingInputs));
    if (prepared.musicPath.empty() && request.musicSettings != MusicSettings())
        notes.push_back("there is no music whose volume, start or fade could be set");
    const std::string shape = shapeNote(request, prepared.playable, prepared.format);
    if (!shape.empty()) notes.push_back(shape);
    const std::string speed = speedNote(prepared.format, prepared.playable, prepared.totalFrames);
    if (!speed.empty()) notes.push_back(speed);
}

/// Tells what the user should know before it starts; who is strict wants none of it.
void tellNotes(const Notes& notes, const RenderRequest& request, JobObserver& observer) {
    for (const std::string& note : notes) {
        if (request.isStrict) throw Error(ErrorKind::Input, note);
        observer.jobNote(note);
    }
}

/// Of a frame, as it is drawn or as it is written, whatever is more.
int64_t pixelsOf(const PreparedGroup& prepared) {
    const int64_t drawn = int64_t{prepared.layout.drawnWidth} * prepared.layout.drawnHeight;
    return std::max(drawn, int64_t{prepared.format.width} * prepared.format.height);
}

void requireInputs(const std::vector<std::string>& missing) {
    if (!missing.empty()) throw Error(ErrorKind::Input, "is not given", "", missing.front());
}

}  // namespace

PreparedGroup prepareGroup(const RenderRequest& request, const JobFolder& job, JobObserver& observer,
                           const std::stop_token& stop) {
    if (request.isStrict && request.isForced)
        throw Error(ErrorKind::Usage, "one of --strict and --force, not both", "", "--strict");
    PreparedGroup prepared;
    prepared.playback = playbackIn(job);
    prepared.playable = open(request, job, *prepared.playback);
    platform::activity::stage("judging the template", ErrorKind::Template);
    judgeAloud(prepared.playable, request, *prepared.playback, observer);
    prepared.format = formatOf(request, prepared.playable);
    prepared.renderer = request.renderer;
    prepared.layout = layoutOf(request, prepared.playable, prepared.format);
    platform::activity::stage("preparing the inputs", ErrorKind::Input);
    prepared.files = std::make_shared<PreparedFiles>(job);
    UserValues values = collectUserValues(request.inputs, prepared.playable, *prepared.files, prepared.format,
                                          prepared.playback->gate(), stop);
    prepared.missingInputs = std::move(values.missing);
    if (request.isStrict) requireInputs(prepared.missingInputs);
    prepared.group = prepared.playable.group;  // which goes on without the user's values
    prepared.group.userMediaMap = Value(std::move(values.map));
    prepared.totalFrames = prepared.group.playedFrames();
    shareFolders(prepared, job);
    Notes notes = std::move(values.notes);
    prepared.musicPath = musicOf(request, prepared, notes);
    addNotes(prepared, request, notes);
    tellNotes(notes, request, observer);
    QVMultiSceneGropPlistFileManager::write(job.file(kGroupName), prepared.group);
    observer.jobPlanned(prepared.totalFrames, pixelsOf(prepared));
    platform::activity::stage("opening the scenes", ErrorKind::Template);
    return prepared;
}

}  // namespace multiscene
