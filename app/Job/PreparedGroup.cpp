#include "app/Job/PreparedGroup.h"

#include <algorithm>
#include <cstdio>

#include "app/Job/JobFormat.h"
#include "app/Job/Preflight.h"
#include "app/Job/UserValues.h"
#include "other/QVMultiSceneGropPlistFileManager.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/audio/AudioFile.h"
#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "videoRenderCore/SceneValidation.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::Value;

namespace {

constexpr const char* kGroupName = "sceneGroup.plist";

Playable open(const RenderRequest& request, const JobFolder& job) {
    FileGate& gate = FileGate::shared();
    gate.reset();
    gate.allowFolder(platform::resourcesFolder());
    gate.allowFolder(job.path());
    return request.isSceneGroupFile ? openSceneGroupFile(request.source) : openPlayable(request.source, job);
}

Value groupOf(const Playable& playable, const Value::Dictionary& userMediaMap) {
    const Value map(userMediaMap);
    return Value::Dictionary{{"scene", Value(playable.entries)},
                             {"userMediaMap", map},
                             {"sceneGroupFpsTotal", totalFpsOfSceneGroup(playable.entries, map)}};
}

/// Faults of the group are blamed on the file in which the author wrote it.
void validate(const PreparedGroup& prepared) {
    const Playable& playable = prepared.playable;
    try {
        SceneValidation::requirePlayable(prepared.group, playable.file.string(), *playable.catalogue);
    } catch (const Error& error) {
        if (playable.isGroupFile || !error.key().starts_with("scene[")) throw;
        throw Error(error.kind(), error.message(), error.file(),
                    "installScenes[0].wechartTempletInfo.sceneGroup" + error.key().substr(5));
    }
    requireUsableFiles(playable);
}

void requireWithin(const MusicSettings& settings, const platform::AudioFile& music, const std::string& path) {
    const double length = CMTimeGetSeconds(music.duration());
    if (settings.start < length) return;
    char text[64];
    std::snprintf(text, sizeof text, "the music lasts %.2f s and cannot start at %g s", length,
                  settings.start);
    throw Error(ErrorKind::Usage, text, path, "--music-start");
}

std::string userMusic(const std::string& path, const MusicSettings& settings) {
    FileGate::shared().allowFile(path);
    FileGate::Opened opened = FileGate::shared().open(path);
    if (opened.verdict != FileGate::Verdict::Allowed)
        throw Error(ErrorKind::Input, describe(opened.verdict), path, "--music");
    requireWithin(settings, platform::AudioFile(std::move(opened.file), path, ErrorKind::Input), path);
    return std::filesystem::absolute(path).lexically_normal().string();
}

std::string templateMusic(PreparedGroup& prepared, const MusicSettings& settings) {
    const std::string& path = prepared.playable.musicPath;
    if (path.empty()) return {};
    FileGate::Opened opened = FileGate::shared().open(path);
    if (opened.verdict == FileGate::Verdict::Missing) {
        prepared.notes.push_back("the template's music is missing: " + path);
        return {};
    }
    if (opened.verdict != FileGate::Verdict::Allowed)
        throw Error(ErrorKind::Template, describe(opened.verdict), path, "bgAudioPath");
    requireWithin(settings, platform::AudioFile(std::move(opened.file), path), path);
    return path;
}

std::string musicOf(const RenderRequest& request, PreparedGroup& prepared) {
    if (!request.music) return templateMusic(prepared, request.musicSettings);
    return *request.music == "none" ? std::string() : userMusic(*request.music, request.musicSettings);
}

/// What the group macros stand for. A group file's resources lie beside it; a template's group is the job's.
void shareFolders(const PreparedGroup& prepared, const JobFolder& job) {
    auto& settings = QVMultiSceneRenderShareSettings::shared();
    const bool isFile = prepared.playable.isGroupFile;
    const std::filesystem::path& folder = isFile ? prepared.playable.folder : job.path();
    settings.setCurrentSceneGroupPlistPathFloder(folder.string() + "/");
    settings.setCurrentSceneGroupUserResourcePathFloder(folder.string() + "/");
}

void addNotes(PreparedGroup& prepared, const RenderRequest& request) {
    if (prepared.musicPath.empty() && request.musicSettings != MusicSettings())
        prepared.notes.push_back("there is no music whose volume, start or fade could be set");
    const std::string shape = shapeNote(request, prepared.playable, prepared.format);
    if (!shape.empty()) prepared.notes.push_back(shape);
    const std::string speed = speedNote(prepared.format, prepared.playable, prepared.totalFrames);
    if (!speed.empty()) prepared.notes.push_back(speed);
}

}  // namespace

PreparedGroup prepareGroup(const RenderRequest& request, const JobFolder& job, const std::stop_token& stop) {
    PreparedGroup prepared;
    prepared.playable = open(request, job);
    SceneCatalogue::setShared(prepared.playable.catalogue);
    prepared.format = formatOf(request, prepared.playable);
    prepared.layout = layoutOf(request, prepared.playable, prepared.format);
    UserValues values = collectUserValues(request.inputs, prepared.playable, job, prepared.format, stop);
    prepared.missingInputs = std::move(values.missing);
    prepared.notes = std::move(values.notes);
    prepared.group = groupOf(prepared.playable, values.map);
    prepared.totalFrames = prepared.group.integer("sceneGroupFpsTotal");
    prepared.groupFile = job.file(kGroupName);
    shareFolders(prepared, job);
    validate(prepared);
    prepared.musicPath = musicOf(request, prepared);
    QVMultiSceneRenderShareSettings::shared().setBgAudioPath(prepared.musicPath);
    addNotes(prepared, request);
    platform::writePropertyList(prepared.groupFile, prepared.group);
    return prepared;
}

}  // namespace multiscene
