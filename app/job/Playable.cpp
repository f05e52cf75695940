#include "app/job/Playable.h"

#include <algorithm>

#include "app/catalogue/InstalledTemplates.h"
#include "app/catalogue/SampleTemplates.h"
#include "app/check/OwnIdentifier.h"
#include "app/data/QVDataManager.h"
#include "app/installation/TemplateInstallation.h"
#include "app/installation/TemplateLocks.h"
#include "app/job/JobFolder.h"
#include "app/program/ProgramVersion.h"
#include "app/template/OpenedFiles.h"
#include "app/template/TemplateArchive.h"
#include "other/QVMultiSceneGropPlistFileManager.h"
#include "other/QVUtil.h"
#include "platform/archive/ZipArchive.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/store/Database.h"
#include "sceneFile/SceneFile.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::Value;

namespace {

constexpr std::chrono::seconds kPatience{30};  // an exchange takes a moment
const std::string kOwnIdentifier = std::string(1, kOwnIdentifierMark) + "1";

Value::Array ownScene(int64_t sceneId, SceneCatalogue& catalogue) {
    QVMultiSceneGropPlistFileManager group("", catalogue);
    group.addSceneWithId(sceneId, kOwnIdentifier);
    return group.group().entries;
}

std::string musicOf(const QVTempletDataModel& record, const fs::path& folder,
                    const QVMultiSceneRenderShareSettings& settings) {
    if (const std::string path = record.bgAudioPath(); !path.empty())
        return settings.multiSceneRenderPathResourcesWithString(path, folder.string() + "/");
    const fs::path usual = folder / TemplateFolder::usualMusic;
    return platform::isThere(usual) ? usual.string() : std::string();
}

Playable playableOf(const QVTempletDataModel& record, const fs::path& folder,
                    std::shared_ptr<SceneCatalogue> catalogue, Playback& playback) {
    Playable playable;
    playable.name = record.sceneName();
    playable.folder = folder;
    playable.group.entries =
        record.sceneGroup().empty() ? ownScene(record.sId(), *catalogue) : record.sceneGroup();
    playable.group.scenes = scenesNamedBy(playable.group.entries, *catalogue);
    playable.inputs = record.userInputInfo();
    playable.format = record.mediaFormat();
    playable.musicPath = musicOf(record, folder, playback.settings());
    playable.catalogue = std::move(catalogue);
    return playable;
}

/// Plays a template without installing it.
Playable openFolder(const fs::path& path, Playback& playback) {
    TemplateFolder folder = readTemplateFolder(path);
    playback.settings().setScenePath(folder.folder.parent_path().string());
    const std::string& scenePath = playback.settings().scenePath();
    requireOwnPaths(folder, scenePath);
    requireProgramVersion(folder.minVersion(), folder.name);
    playback.gate().allowFolder(folder.folder);
    const auto catalogue = std::make_shared<QVDataManager>(platform::Database::kInMemory, scenePath);
    catalogue->checkUsable();
    catalogue->installMultiSceneTemplate(folder.description);
    Playable playable = playableOf(folder.records.front(), folder.folder, catalogue, playback);
    playable.file = folder.plistPath();
    playable.templateFolder = folder.folder;
    playable.description = std::move(folder);
    return playable;
}

fs::path resourceFolder(const QVTempletDataModel& record) {
    return (fs::path(record.sceneResourceFolderPath()) / "").lexically_normal().parent_path();
}

std::optional<InstalledTemplate> installedTemplate(const std::string& numberOrName,
                                                   QVDataManager& catalogue) {
    if (!platform::isThere(QVDataManager::databasePath())) return std::nullopt;
    catalogue.checkUsable();
    TemplateInstallation::recover(catalogue);
    return findInstalledTemplate(catalogue, numberOrName);
}

/// The templates of the data home whose scenes are played, in an order that is the same for everybody.
std::vector<platform::FileLock> locksOf(const Playable& playable) {
    std::set<std::string> names;
    for (const auto& [number, scene] : playable.group.scenes)
        if (const std::string name = templateOwning(scene.record.scenePlistPath); isTemplateName(name))
            names.insert(name);
    std::vector<platform::FileLock> locks;
    for (const std::string& name : names)
        if (auto lock = lockForUse(name, kPatience)) locks.push_back(std::move(*lock));
    return locks;
}

std::optional<Playable> openInstalled(const std::string& numberOrName, Playback& playback) {
    const auto catalogue = std::make_shared<QVDataManager>();
    const auto open = [&]() -> std::optional<Playable> {
        const auto installed = installedTemplate(numberOrName, *catalogue);
        if (!installed) return std::nullopt;
        const QVTempletDataModel& record = installed->main();
        Playable playable = playableOf(record, resourceFolder(record), catalogue, playback);
        playable.templateFolder = fs::path(QVUtil::scenePath()) / templateOwning(record.scenePlistPath());
        return playable;
    };
    const auto found = open();
    if (!found) return std::nullopt;
    auto locks = locksOf(*found);
    catalogue->readAnew();
    auto playable = open();  // as it is now that nobody can exchange it
    if (playable) playable->inUse = std::move(locks);
    openHomeFolders(playback.gate());
    return playable;
}

bool isTemplateFolder(const fs::path& path) {
    const fs::path folder = (fs::absolute(path) / "").lexically_normal().parent_path();
    return platform::isThere(folder / (folder.filename().string() + ".plist"));
}

Playable groupFilePlayable(const fs::path& file, Value content, Playback& playback) {
    Playable playable;
    playable.file = fs::absolute(file).lexically_normal();
    playable.folder = playable.file.parent_path();
    playable.name = playable.file.filename().string();
    if (!content.isDictionary() || !content["scene"].isArray())
        throw Error(ErrorKind::Template, "is neither a template nor a scene-group file", file.string(),
                    "scene");
    openSceneGroupFiles(playable.folder, content["userMediaMap"], playback);
    playable.catalogue = std::make_shared<QVDataManager>();
    playable.group = QVMultiSceneGropPlistFileManager::groupOf(content);
    playable.group.scenes = scenesNamedBy(playable.group.entries, *playable.catalogue);
    playable.groupFile = std::move(content);
    playable.isGroupFile = true;
    playable.inUse = locksOf(playable);
    return playable;
}

Playable openFile(const fs::path& file, const JobFolder& job, Playback& playback) {
    if (file.extension() != ".plist") return openFolder(unpackTemplate(file, job), playback);
    playback.gate().allowFile(file);
    Value content = readSceneFile(file, playback.gate());
    if (content.has("installScenes")) return openFolder(fs::absolute(file).parent_path(), playback);
    return groupFilePlayable(file, std::move(content), playback);
}

Error notFound(const std::string& argument) {
    return Error(ErrorKind::Template,
                 "no such template: neither a folder, a zip nor the name of one (multiscene templates list)",
                 argument);
}

}  // namespace

Playable openPlayable(const std::string& argument, const JobFolder& job, Playback& playback) {
    const fs::path path(argument);
    const bool isPath = argument.find('/') != std::string::npos;
    if (platform::isFolder(path) && (isPath || isTemplateFolder(path))) return openFolder(path, playback);
    if (platform::isFile(path)) return openFile(path, job, playback);
    if (!isPath) {
        if (auto installed = openInstalled(argument, playback)) return std::move(*installed);
        if (const auto sample = findSampleTemplate(argument)) return openFolder(sample->folder, playback);
    }
    if (platform::isFolder(path)) return openFolder(path, playback);
    throw notFound(argument);
}

std::optional<fs::path> templateFolderAt(const std::string& argument) {
    const fs::path path(argument);
    const bool isPath = argument.find('/') != std::string::npos;
    if (platform::isFolder(path) && (isPath || isTemplateFolder(path))) return path;
    if (!platform::isFile(path) || path.extension() != ".plist") return std::nullopt;
    return fs::absolute(path).parent_path();
}

std::optional<fs::path> templateFolderAt(const std::string& argument, const JobFolder& job) {
    if (auto folder = templateFolderAt(argument)) return folder;
    return platform::isFile(argument) ? std::optional(unpackTemplate(argument, job)) : std::nullopt;
}

fs::path unpackTemplate(const fs::path& archive, const JobFolder& job) {
    const fs::path unpacked = job.file("template");
    platform::createFolders(unpacked);
    platform::ZipArchive zip(archive);
    const std::string name = onlyFolderOf(zip, archive.string());
    if (!isTemplateName(name)) throw Error(ErrorKind::Template, "holds no template folder", archive.string());
    zip.extract(unpacked);
    return unpacked / name;
}

Playable openSceneGroupFile(const fs::path& file, Playback& playback) {
    playback.gate().allowFile(file);
    return groupFilePlayable(file, readSceneFile(file, playback.gate()), playback);
}

}  // namespace multiscene
