#include "app/installation/TemplateInstallation.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <set>

#include "app/installation/FolderSwap.h"
#include "app/installation/TemplateLocks.h"
#include "app/program/ProgramVersion.h"
#include "app/template/TemplateArchive.h"
#include "other/QVUtil.h"
#include "platform/archive/ZipArchive.h"
#include "platform/base/CurrentError.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/FolderListing.h"
#include "platform/base/Log.h"
#include "platform/base/PrivateFolder.h"
#include "platform/crypto/Digest.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::FileLock;
namespace fs = std::filesystem;

namespace {

constexpr const char* kStagingPrefix = ".staging-";
constexpr const char* kArchivePrefix = ".archive-";
constexpr const char* kDownloadPrefix = ".download-";
constexpr const char* kUnsettled = "what became of it is settled when the program is started again";

std::string requireName(const std::string& name) {
    if (!isTemplateName(name)) throw Error(ErrorKind::Template, "is no name that a template can have", name);
    return name;
}

FileLock lockOrFail(const std::string& name, const InstallOptions& options) {
    auto lock = lockForChange(name, options.patience, options.isCancelled);
    if (!lock) throw Error(ErrorKind::Transient, "another program is changing this template", name);
    return std::move(*lock);
}

void tellStep(const InstallOptions& options, const char* name) {
    if (options.onStep) options.onStep(name);
}

/// Installed are plain files alone, whoever has unpacked them.
void requirePlainFiles(const fs::path& folder) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_type type = entry.symlink_status().type();
        if (type != fs::file_type::regular && type != fs::file_type::directory)
            throw Error(ErrorKind::Template, "is a link or a special file; a template holds plain files only",
                        entry.path().string());
    }
}

/// What was unpacked in a job's folder is the user's alone; what is installed may be used by others.
void showToEverybody(const fs::path& folder) {
    platform::makeUsuallyReadable(folder);
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        platform::makeUsuallyReadable(entry.path());
}

std::vector<int64_t> numbersOf(const std::vector<QVTempletDataModel>& records) {
    std::vector<int64_t> numbers;
    for (const QVTempletDataModel& record : records) numbers.push_back(record.sId());
    return numbers;
}

/// Of the scenes that lie in that template's folder.
std::vector<int64_t> numbersOwnedBy(const std::string& name, QVDataManager& catalogue) {
    std::vector<int64_t> numbers;
    for (const SceneConfigData& scene : catalogue.allScenes())
        if (templateOwning(scene.scenePlistPath) == name) numbers.push_back(scene.sId);
    return numbers;
}

/// The file of a record in a folder that is not yet where the record's path says.
fs::path stagedFile(const fs::path& stagedFolder, const fs::path& finalFolder, const std::string& macroPath) {
    const fs::path complete = fs::path(QVUtil::multiScenePathWithString(macroPath)).lexically_normal();
    return stagedFolder / complete.lexically_relative(finalFolder);
}

/// The template that a leftover file belongs to.
std::string nameOfLeftover(const std::string& fileName, const std::string& prefix,
                           const std::string& suffix) {
    if (!fileName.starts_with(prefix) || !fileName.ends_with(suffix)) return {};
    return fileName.substr(prefix.size(), fileName.size() - prefix.size() - suffix.size());
}

void collectLeftovers(const fs::path& folder, const std::string& prefix, const std::string& suffix,
                      std::set<std::string>& names) {
    for (const fs::path& file : platform::filesIn(folder)) {
        const std::string name = nameOfLeftover(file.filename().string(), prefix, suffix);
        if (isTemplateName(name)) names.insert(name);
    }
}

/// What the archive holds instead of the folder that it is named after.
std::string remarkOnContent(const platform::ZipArchive& archive, const std::string& name) {
    std::set<std::string> folders;
    for (const platform::ZipEntry& entry : archive.entries())
        if (const size_t slash = entry.name.find('/'); slash != std::string::npos)
            folders.insert(entry.name.substr(0, slash));
    std::string remark = "the archive holds no " + name + "/" + name + ".plist";
    for (const std::string& folder : folders)
        remark += (folder == *folders.begin() ? "; it holds " : ", ") + folder;
    return remark;
}

}  // namespace

bool isUnsettled(const Error& failure) { return failure.message().ends_with(kUnsettled); }

Error unsettled(const Error& failure) {
    return Error(failure.kind(), failure.message() + "; " + kUnsettled, failure.file(), failure.key());
}

TemplateInstallation::TemplateInstallation(QVDataManager& catalogue, const std::string& name,
                                           InstallOptions options)
    : catalogue_(catalogue),
      journal_(catalogue),
      archives_(catalogue),
      name_(requireName(name)),
      options_(std::move(options)),
      lock_(lockOrFail(name, options_)) {
    step("locked");
    recoverThis();
}

TemplateInstallation::TemplateInstallation(QVDataManager& catalogue, const std::string& name, FileLock lock)
    : catalogue_(catalogue), journal_(catalogue), archives_(catalogue), name_(name), lock_(std::move(lock)) {
    recoverThis();
}

void TemplateInstallation::step(const char* name) const { tellStep(options_, name); }

fs::path TemplateInstallation::finalFolder() const {
    return (fs::path(QVUtil::scenePath()) / name_).lexically_normal();
}
fs::path TemplateInstallation::stagingFolder() const {
    return fs::path(QVUtil::scenePath()) / (kStagingPrefix + name_);
}
fs::path TemplateInstallation::archivePath() const {
    return fs::path(QVUtil::scenePath()) / (kArchivePrefix + name_ + ".zip");
}
fs::path TemplateInstallation::partialDownloadPath() const {
    return fs::path(QVUtil::multiSceneRootPath()) / (kDownloadPrefix + name_ + ".zip");
}

std::vector<int64_t> TemplateInstallation::installedNumbers() { return numbersOwnedBy(name_, catalogue_); }

void TemplateInstallation::refuseForeignNumbers(const TemplateFolder& folder) {
    for (const QVTempletDataModel& record : folder.records) {
        const auto known = catalogue_.querySceneWithSid(record.sId());
        const std::string owner = known ? templateOwning(known->scenePlistPath) : name_;
        if (owner == name_) continue;
        throw Error(ErrorKind::Template,
                    "scene number " + std::to_string(record.sId()) + " belongs to the template \"" +
                        (owner.empty() ? known->sceneName : owner) + "\"",
                    name_ + ".plist", "installScenes");
    }
}

bool TemplateInstallation::hasOwnFile() const {
    return platform::isThere(finalFolder() / (name_ + ".plist"));
}

std::optional<InstallResult> TemplateInstallation::alreadyInstalled() {
    return alreadyInstalled(catalogue_, name_, options_.offeredNumber);
}

std::optional<InstallResult> TemplateInstallation::alreadyInstalled(QVDataManager& catalogue,
                                                                    const std::string& name,
                                                                    std::optional<int64_t> offered) {
    const std::vector<int64_t> numbers = numbersOwnedBy(name, catalogue);
    const fs::path file = fs::path(QVUtil::scenePath()) / name / (name + ".plist");
    if (numbers.empty() || !platform::isThere(file)) return std::nullopt;
    if (offered && std::find(numbers.begin(), numbers.end(), *offered) == numbers.end()) return std::nullopt;
    return InstallResult{InstallOutcome::AlreadyInstalled, name, numbers, ""};
}

InstallResult TemplateInstallation::judged(const TemplateFolder& folder) {
    requireOwnPaths(folder);
    refuseForeignNumbers(folder);

    const std::vector<int64_t> before = installedNumbers(), now = numbersOf(folder.records);
    const bool present = hasOwnFile();
    InstallResult result{InstallOutcome::Installed, name_, now, ""};
    if (before.empty() && !present && platform::isThere(finalFolder()) && !options_.replace)
        throw Error(ErrorKind::Failed,
                    "the folder is there without being installed; replace it or move it away",
                    finalFolder().string());
    if (before.empty() || !present) return result;
    if (options_.replace) {
        result.outcome = InstallOutcome::Replaced;
        return result;
    }
    const bool same =
        std::find_first_of(before.begin(), before.end(), now.begin(), now.end()) != before.end();
    if (!same) throw Error(ErrorKind::Template, "another template of this name is installed", name_);
    result.outcome = InstallOutcome::AlreadyInstalled;
    return result;
}

std::optional<bool> TemplateInstallation::isMade(QVDataManager& catalogue, const std::string& name,
                                                 const std::string& newIdentity) {
    for (const PendingChange& pending : InstallJournal(catalogue).pending())
        if (pending.name == name) return std::nullopt;
    const bool isInstalled = !numbersOwnedBy(name, catalogue).empty();
    if (newIdentity.empty()) return !isInstalled;
    return isInstalled && folderIdentity(fs::path(QVUtil::scenePath()) / name) == newIdentity;
}

UnpackedTemplate TemplateInstallation::unpack(const fs::path& archivePath, const std::string& name,
                                              const fs::path& into, const InstallOptions& options) {
    const std::string plist = requireName(name) + "/" + name + ".plist";
    platform::ZipArchive archive(archivePath, ErrorKind::Template, options.limits);
    onlyFolderOf(archive, archivePath.string());
    const auto& entries = archive.entries();
    if (std::none_of(entries.begin(), entries.end(), [&](const auto& entry) { return entry.name == plist; }))
        return {std::nullopt, remarkOnContent(archive, name)};
    platform::createFolders(into);
    tellStep(options, "staged");
    archive.extract(into, {.wanted = [&](const auto& entry) { return entry.name.starts_with(name + "/"); },
                           .progress = [&](uint64_t, uint64_t) { tellStep(options, "unpacking"); },
                           .isCancelled = options.isCancelled});
    tellStep(options, "unpacked");
    const TemplateFolder folder = readTemplateFolder(into / name);
    requireOwnPaths(folder);
    requireProgramVersion(folder.minVersion(), name);
    const fs::path final = fs::path(QVUtil::scenePath()) / name;
    for (const QVTempletDataModel& record : folder.records)
        if (!platform::isFile(stagedFile(folder.folder, final.lexically_normal(), record.scenePlistPath())))
            throw Error(ErrorKind::Template, "the scene file " + record.scenePlistPath() + " is missing",
                        name + ".plist", "installScenes");
    if (options.judge) options.judge(folder);
    return {folder, ""};
}

InstallResult TemplateInstallation::install(const fs::path& archive) {
    UnpackedTemplate unpacked;
    try {
        unpacked = unpack(archive, name_, stagingFolder(), options_);
    } catch (...) {
        clearLeftovers();
        throw;
    }
    if (!unpacked.folder) return {InstallOutcome::NothingInstalled, name_, {}, unpacked.remark};
    return takeIn(*unpacked.folder, archive);
}

InstallResult TemplateInstallation::takeIn(const TemplateFolder& unpacked, const fs::path& archive) {
    InstallResult result;
    try {
        stage(unpacked);
        result = judged(unpacked);
        step("judged");
        if (result.outcome != InstallOutcome::AlreadyInstalled) syncFilesBelow(stagingFolder());
        step("synced");
    } catch (...) {
        clearLeftovers();
        throw;
    }
    if (result.outcome == InstallOutcome::AlreadyInstalled)
        clearLeftovers();
    else
        moveIn(unpacked, platform::fileDigest(archive));
    return result;
}

/// Where the exchange takes it from.
void TemplateInstallation::stage(const TemplateFolder& unpacked) {
    requirePlainFiles(unpacked.folder);
    showToEverybody(unpacked.folder);
    if (unpacked.folder == stagedFolder()) return;
    platform::createFolders(stagingFolder());
    if (::rename(unpacked.folder.c_str(), stagedFolder().c_str()) != 0)
        throw platform::errnoError(errno, "cannot move to " + stagedFolder().string(),
                                   unpacked.folder.string());
}

void TemplateInstallation::moveIn(const TemplateFolder& folder, const std::string& digest) {
    change(folderIdentity(stagedFolder()), [&](platform::Database& database) {
        refuseForeignNumbers(folder);
        for (const int64_t sId : installedNumbers()) catalogue_.removeSignSceneDataWithSid(sId);
        for (const QVTempletDataModel& record : folder.records)
            if (catalogue_.insertSignSceneDataWithSignSceneDataModel(record) == -1)
                throw Error(ErrorKind::Failed, "the catalogue does not take the template", name_);
        archives_.remember(database, name_, digest);
    });
}

InstallResult TemplateInstallation::remove() {
    const std::vector<int64_t> numbers = installedNumbers();
    if (numbers.empty()) throw Error(ErrorKind::Template, "is not installed", name_);
    platform::createFolders(stagingFolder());
    change("", [&](platform::Database& database) {
        for (const int64_t sId : numbers) catalogue_.removeSignSceneDataWithSid(sId);
        archives_.forget(database, name_);
    });
    return {InstallOutcome::Removed, name_, numbers, ""};
}

void TemplateInstallation::change(const std::string& newIdentity,
                                  const std::function<void(platform::Database&)>& changeRows) {
    const FileLock alone = aloneWithFiles();
    announce(newIdentity);
    step("announced");
    try {
        catalogue_.transaction([&](platform::Database& database) {
            changeRows(database);
            journal_.markCommitted(database, name_);
            step("recorded");
            swapFolders(finalFolder(), stagedFolder());
            step("moved");
            syncFolder(QVUtil::scenePath());
        });
    } catch (...) {
        undo(platform::currentError());
        throw;
    }
    step("committed");
    tidyUp();
    step("finished");
}

/// The old folder may be in the staging place: nothing else may clear that.
void TemplateInstallation::undo(const Error& failure) {
    try {
        recoverThis();
    } catch (const Error&) {
        throw unsettled(failure);
    }
}

void TemplateInstallation::announce(const std::string& newIdentity) {
    try {
        journal_.announce(name_, newIdentity);
    } catch (...) {
        clearLeftovers();
        throw;
    }
}

/// The change is made; what is left of it hurts nobody, and goes at the next start.
void TemplateInstallation::tidyUp() {
    clearLeftovers();
    step("tidied");
    try {
        journal_.forget(name_);
    } catch (const Error& failure) {
        platform::log::info("the change of " + name_ + " stays in the journal: " + failure.what());
    }
}

/// A video is made with the files of one version, so the exchange waits for those who read them.
FileLock TemplateInstallation::aloneWithFiles() {
    try {
        return lockForExchange(name_, options_.patience, options_.isCancelled);
    } catch (...) {
        clearLeftovers();
        throw;
    }
}

void TemplateInstallation::recoverThis() {
    settleSwap(finalFolder(), stagedFolder());
    for (const PendingChange& pending : journal_.pending()) {
        if (pending.name != name_) continue;
        const bool movedIn =
            !pending.newIdentity.empty() && folderIdentity(finalFolder()) == pending.newIdentity;
        const bool movedOut = pending.newIdentity.empty() && platform::isThere(stagedFolder());
        if (!pending.committed && (movedIn || movedOut)) swapFolders(finalFolder(), stagedFolder());
        clearLeftovers();
        journal_.forget(name_);
        platform::log::info((pending.committed ? "finished" : "undid") +
                            std::string(" an interrupted change of ") + name_);
    }
    clearLeftovers();
}

void TemplateInstallation::clearLeftovers() {
    std::error_code ignored;
    fs::remove_all(stagingFolder(), ignored);
}

void TemplateInstallation::recover(QVDataManager& catalogue) {
    std::set<std::string> names;
    for (const PendingChange& pending : InstallJournal(catalogue).pending()) names.insert(pending.name);
    collectLeftovers(QVUtil::scenePath(), kStagingPrefix, "", names);
    collectLeftovers(QVUtil::scenePath(), kArchivePrefix, ".zip", names);
    collectLeftovers(QVUtil::multiSceneRootPath(), kDownloadPrefix, ".zip", names);
    for (const std::string& name : names) try {
            recoverOne(catalogue, name);
        } catch (const Error& failure) {
            // Where nothing can be written the program can still be used.
            platform::log::info(name + " is not put right: " + failure.what());
        }
}

void TemplateInstallation::recoverOne(QVDataManager& catalogue, const std::string& name) {
    auto lock = lockForChange(name, std::chrono::milliseconds(0));
    if (!lock) return;
    const TemplateInstallation leftover(catalogue, name, std::move(*lock));
    std::error_code ignored;
    fs::remove(leftover.archivePath(), ignored);
    fs::remove(leftover.partialDownloadPath(), ignored);
}

}  // namespace multiscene
