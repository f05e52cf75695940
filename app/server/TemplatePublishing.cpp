#include "app/server/TemplatePublishing.h"

#include <algorithm>
#include <set>
#include <sstream>

#include "app/server/UrlText.h"
#include "app/template/SceneJudge.h"
#include "app/template/TemplateLength.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/FileGate.h"
#include "platform/base/FolderListing.h"
#include "platform/base/Limits.h"
#include "platform/base/Log.h"
#include "platform/base/PartFile.h"
#include "platform/base/PartFolder.h"
#include "platform/base/PropertyList.h"
#include "platform/crypto/Digest.h"
#include "platform/store/FileLock.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::Value;
namespace fs = std::filesystem;

namespace {

constexpr std::chrono::seconds kPatience{60};
constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;
constexpr float kFirstVersion = 1;
constexpr size_t kVersionDigits = 16;  // of the archive's digest
constexpr const char *kArchives = "templates", *kThumbnails = "thumbnails", *kPreviews = "previews";
constexpr const char* kUnknown = ".img";

/// The thumbnail that the template brings; empty when it has none, or names one outside its folder.
fs::path thumbnailOf(const TemplateFolder& folder) {
    const std::string named = folder.records.front().sceneThumbnailPath();
    const fs::path file = fileInFolder(folder, named);
    platform::FileGate fence;
    fence.allowFolder(folder.folder);
    return !named.empty() && fence.exists(file) ? file : fs::path();
}

void copyFile(const fs::path& from, const fs::path& to) {
    const auto bytes = platform::readFile(from, platform::limitOf("maxThumbnailBytes"), ErrorKind::Template);
    platform::writeFileAtomically(to, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

constexpr const char *kConfigurationFolder = "severConfig", *kConfiguration = "info1-1.plist";
/// In the stage: names of the versions that others may still be fetching.
constexpr const char* kKept = "versions";

std::vector<fs::path> plainFoldersIn(const fs::path& folder) {
    std::vector<fs::path> found = platform::filesIn(folder);
    std::erase_if(found, [](const fs::path& each) {
        return fs::symlink_status(each).type() != fs::file_type::directory;
    });
    return found;
}

/// The template's plain files in the folder of a version.
std::vector<fs::path> filesOf(const std::string& name, const fs::path& version) {
    std::vector<fs::path> found = platform::filesIn(version);
    std::erase_if(found, [&](const fs::path& each) {
        return each.stem() != name || fs::symlink_status(each).type() != fs::file_type::regular;
    });
    return found;
}

std::set<std::string> keptVersions(const fs::path& stage) {
    constexpr uint64_t mostBytes = 4096;
    const auto bytes = platform::readFile(stage / kKept, mostBytes);
    std::istringstream lines(std::string(bytes.begin(), bytes.end()));
    std::set<std::string> versions;
    for (std::string line; std::getline(lines, line);) versions.insert(line);
    return versions;
}

/// Those who have fetched the list of before still find what it names. Templates that are packed alike share
/// a folder.
void removeOtherVersionsThan(const std::set<std::string>& versions, const fs::path& serverFolder,
                             const std::string& name) try {
    std::error_code ignored;
    for (const char* subfolder : {kArchives, kThumbnails, kPreviews})
        for (const fs::path& version : plainFoldersIn(serverFolder / subfolder)) {
            if (versions.contains(version.filename().string())) continue;
            for (const fs::path& file : filesOf(name, version)) fs::remove(file, ignored);
            fs::remove(version, ignored);
        }
} catch (const std::exception& failure) {
    // The list is there: what is left goes the next time.
    platform::log::info(std::string("older versions stay: ") + failure.what());
}

/// What is added to a server's folder for one template.
class Publication {
  public:
    Publication(const TemplateFolder& folder, const fs::path& serverFolder, const fs::path& stage,
                const PublishOptions& options)
        : folder_(folder), server_(serverFolder), stage_(stage), options_(options) {
        configuration_ = existingConfiguration();
        refuseForeignNumber();
    }

    void run() {
        const fs::path packed = stage_ / (folder_.name + ".zip");
        platform::createFolders(stage_);
        const uint64_t bytes = packTemplate(folder_.folder, packed, options_.judge, options_.minVersion);
        const std::string digest = platform::fileDigest(packed);
        version_ = versionOf(digest);
        const double size = static_cast<double>(bytes) / kBytesPerMegabyte;
        const std::string archive = place(kArchives, ".zip");
        platform::moveFile(packed, stage_ / archive);
        Value::Dictionary entry{{"templateUrl", url(archive)}, {"templateSize", size}};
        entry["templateSha256"] = digest;
        entry["videoPreviewUrl"] = url(placePreview());
        entry["thumbUrl"] = url(placeThumbnail());
        const std::string before = versionOf(offeredBefore().string("templateSha256"));
        writeConfiguration(std::move(entry));
        platform::writeFileAtomically(stage_ / kKept, version_ + "\n" + before + "\n");
    }

  private:
    static fs::path configurationPath(const fs::path& folder) {
        return folder / kConfigurationFolder / kConfiguration;
    }
    Value existingConfiguration() const {
        if (!platform::isThere(configurationPath(server_)))
            return Value::Dictionary{{"isVideoCache", false}, {"isWechatTimelineShare", false}};
        const fs::path file = configurationPath(server_);
        Value found = platform::readPropertyList(file, ErrorKind::Failed);
        // What it holds is kept, or nothing is written.
        const Value offered = found["severTempletData"];
        if (!found.isDictionary() || !(offered.isNone() || offered.isArray()))
            throw Error(ErrorKind::Failed, "is no list of templates", file.string());
        return found;
    }

    float minVersion() const {
        return options_.minVersion.value_or(std::max(folder_.minVersion(), kFirstVersion));
    }
    int64_t number() const { return folder_.records.front().sId(); }
    std::string url(const std::string& place) const {
        return place.empty() ? "" : options_.baseUrl + percentEncoded(place);
    }
    /// Each version has a place of its own, so that the list of before goes on naming what it was written
    /// for.
    std::string place(const std::string& subfolder, const std::string& extension) const {
        platform::createFolders(stage_ / subfolder / version_);
        return subfolder + "/" + version_ + "/" + folder_.name + extension;
    }
    static std::string versionOf(const std::string& digest) { return digest.substr(0, kVersionDigits); }

    Value offeredBefore() const {
        for (const Value& entry : configuration_.array("severTempletData"))
            if (templateNameOfUrl(entry.string("templateUrl")) == folder_.name) return entry;
        return {};
    }

    void refuseForeignNumber() const {
        for (const Value& entry : configuration_.array("severTempletData")) {
            const std::string owner = templateNameOfUrl(entry.string("templateUrl"));
            if (entry.integer("sId") == number() && owner != folder_.name)
                throw Error(ErrorKind::Template,
                            "scene number " + std::to_string(number()) + " is offered as \"" + owner + "\"",
                            folder_.plistPath().string(), "installScenes[0].sId");
        }
    }

    std::string placeThumbnail() {
        const fs::path own = thumbnailOf(folder_);
        if (own.empty() && !options_.renderThumbnail) return {};
        // Without an extension the end of a template's name would be taken for one.
        const std::string extension = own.has_extension() ? own.extension().string() : kUnknown;
        const std::string target = place(kThumbnails, own.empty() ? ".png" : extension);
        own.empty() ? options_.renderThumbnail(folder_, stage_ / target) : copyFile(own, stage_ / target);
        return target;
    }

    std::string placePreview() {
        if (!options_.renderPreview) return {};
        const std::string target = place(kPreviews, ".mp4");
        options_.renderPreview(folder_, stage_ / target);
        return target;
    }

    void writeConfiguration(Value::Dictionary entry) {
        const Value& record = folder_.description.array("installScenes").front();
        for (const char* key : {"cName", "eName", "jName", "youtubePreviewUrl", "wechartTempletInfo"})
            if (record.has(key)) entry[key] = record[key];
        entry["sId"] = number();
        entry["minVersion"] = static_cast<double>(minVersion());
        entry["isNew"] = options_.isNew;
        entry["fpsLength"] = lengthInFrames(folder_.records, nullptr);
        entry["photoTotal"] = photosWanted(folder_.records.front());

        Value::Array offered = configuration_.array("severTempletData");
        const auto known = std::find_if(offered.begin(), offered.end(), [&](const Value& each) {
            return templateNameOfUrl(each.string("templateUrl")) == folder_.name;
        });
        if (known == offered.end())
            offered.emplace_back(std::move(entry));
        else
            *known = Value(std::move(entry));
        const fs::path file = configurationPath(stage_);
        platform::createFolders(file.parent_path());
        platform::writePropertyList(file, configuration_.with("severTempletData", Value(std::move(offered))));
    }

    const TemplateFolder& folder_;
    fs::path server_, stage_;
    const PublishOptions& options_;
    Value configuration_;
    std::string version_;
};

}  // namespace

platform::FileLock lockServerFolder(const fs::path& serverFolder, const std::function<bool()>& isCancelled) {
    platform::createFolders(serverFolder);
    auto lock = platform::FileLock::acquire(serverFolder / ".publish.lock", kPatience,
                                            platform::FileLock::Mode::Alone, isCancelled);
    if (!lock) throw Error(ErrorKind::Transient, "another program is publishing here", serverFolder.string());
    return std::move(*lock);
}

void stageTemplate(const fs::path& folder, const fs::path& serverFolder, const fs::path& stage,
                   const PublishOptions& options) {
    const TemplateFolder read = readTemplateFolder(folder);
    Publication(read, serverFolder, stage, options).run();
}

void publishStaged(const fs::path& stage, const fs::path& serverFolder, const std::string& name) {
    const std::set<std::string> kept = keptVersions(stage);
    const fs::path lists = serverFolder / kConfigurationFolder;
    for (const fs::path& folder : {serverFolder, lists}) platform::removeAbandonedParts(folder);
    for (const char* subfolder : {kArchives, kPreviews, kThumbnails})
        for (const fs::path& version : plainFoldersIn(stage / subfolder))
            for (const fs::path& file : filesOf(name, version)) {
                const fs::path place = serverFolder / subfolder / version.filename();
                platform::createFolders(place);
                platform::removeAbandonedParts(place);
                platform::moveFile(file, place / file.filename());
            }
    // The list last: what it names is there.
    platform::createFolders(lists);
    for (const fs::path& list : filesOf(fs::path(kConfiguration).stem(), stage / kConfigurationFolder))
        platform::moveFile(list, lists / kConfiguration);
    removeOtherVersionsThan(kept, serverFolder, name);
}

void publishTemplate(const fs::path& folder, const fs::path& serverFolder, const PublishOptions& options) {
    const platform::FileLock lock = lockServerFolder(serverFolder);
    platform::removeAbandonedParts(serverFolder);
    const platform::PartFolder stage(serverFolder, "publishing");
    stageTemplate(folder, serverFolder, stage.path(), options);
    const fs::path absolute = (fs::absolute(folder) / "").lexically_normal().parent_path();
    publishStaged(stage.path(), serverFolder, absolute.filename().string());
}

}  // namespace multiscene
