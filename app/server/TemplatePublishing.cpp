#include "app/server/TemplatePublishing.h"

#include <fcntl.h>

#include <algorithm>
#include <set>

#include "app/server/UrlText.h"
#include "app/template/SceneJudge.h"
#include "app/template/TemplateLength.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/FileGate.h"
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
constexpr uint64_t kMaxThumbnailBytes = 32u << 20;
constexpr size_t kVersionDigits = 16;  // of the archive's digest
constexpr const char *kArchives = "templates", *kThumbnails = "thumbnails", *kPreviews = "previews";

/// The thumbnail that the template brings; empty when it has none, or names one outside its folder.
fs::path thumbnailOf(const TemplateFolder& folder) {
    const std::string named = folder.records.front().sceneThumbnailPath();
    const fs::path file = fileInFolder(folder, named);
    platform::FileGate fence;
    fence.allowFolder(folder.folder);
    return !named.empty() && fence.exists(file) ? file : fs::path();
}

void copyFile(const fs::path& from, const fs::path& to) {
    const auto bytes = platform::readFile(from, kMaxThumbnailBytes, ErrorKind::Template);
    platform::writeFileAtomically(to, {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

/// The server's folder while one template is added to it.
class Publication {
  public:
    Publication(const TemplateFolder& folder, const fs::path& serverFolder, const PublishOptions& options)
        : folder_(folder), server_(serverFolder), options_(options), lock_(locked(serverFolder)) {
        platform::removeAbandonedParts(serverFolder);
        configuration_ = existingConfiguration();
        refuseForeignNumber();
    }

    void run() {
        const platform::PartFolder workplace(server_, "publishing");
        const fs::path packed = workplace.path() / (folder_.name + ".zip");
        packTemplate(folder_.folder, packed, options_.judge, options_.minVersion);
        const std::string digest = platform::fileDigest(packed);
        version_ = versionOf(digest);
        const double size =
            static_cast<double>(platform::openFile(packed, O_RDONLY).size()) / kBytesPerMegabyte;
        const std::string archive = place(kArchives, ".zip");
        platform::moveFile(packed, server_ / archive);
        Value::Dictionary entry{{"templateUrl", url(archive)}, {"templateSize", size}};
        entry["templateSha256"] = digest;
        entry["videoPreviewUrl"] = url(placePreview());
        entry["thumbUrl"] = url(placeThumbnail());
        const std::string before = versionOf(offeredBefore().string("templateSha256"));
        writeConfiguration(std::move(entry));
        removeOtherVersionsThan({version_, before});
    }

  private:
    static platform::FileLock locked(const fs::path& serverFolder) {
        platform::createFolders(serverFolder);
        auto lock = platform::FileLock::acquire(serverFolder / ".publish.lock", kPatience);
        if (!lock)
            throw Error(ErrorKind::Transient, "another program is publishing here", serverFolder.string());
        return std::move(*lock);
    }

    fs::path configurationPath() const { return server_ / "severConfig" / "info1-1.plist"; }
    Value existingConfiguration() const {
        if (!platform::isThere(configurationPath()))
            return Value::Dictionary{{"isVideoCache", false}, {"isWechatTimelineShare", false}};
        return platform::readPropertyList(configurationPath(), ErrorKind::Failed);
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
        platform::createFolders(server_ / subfolder / version_);
        return subfolder + "/" + version_ + "/" + folder_.name + extension;
    }
    static std::string versionOf(const std::string& digest) { return digest.substr(0, kVersionDigits); }

    Value offeredBefore() const {
        for (const Value& entry : configuration_.array("severTempletData"))
            if (templateNameOfUrl(entry.string("templateUrl")) == folder_.name) return entry;
        return {};
    }

    /// Those who have fetched the list of before still find what it names.
    void removeOtherVersionsThan(const std::set<std::string>& versions) const {
        for (const char* subfolder : {kArchives, kThumbnails, kPreviews}) {
            std::error_code failure;
            for (const auto& entry : fs::directory_iterator(server_ / subfolder, failure))
                if (entry.is_directory(failure) && !versions.contains(entry.path().filename().string()))
                    removeVersion(entry.path());
        }
    }

    /// Templates that are packed alike share a folder.
    void removeVersion(const fs::path& version) const {
        std::error_code ignored;
        for (const auto& entry : fs::directory_iterator(version, ignored))
            if (entry.path().stem() == folder_.name) fs::remove(entry.path(), ignored);
        fs::remove(version, ignored);
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
        const std::string target = place(kThumbnails, own.empty() ? ".png" : own.extension().string());
        own.empty() ? options_.renderThumbnail(folder_, server_ / target) : copyFile(own, server_ / target);
        return target;
    }

    std::string placePreview() {
        if (!options_.renderPreview) return {};
        const std::string target = place(kPreviews, ".mp4");
        options_.renderPreview(folder_, server_ / target);
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
        platform::createFolders(configurationPath().parent_path());
        platform::writePropertyList(configurationPath(),
                                    configuration_.with("severTempletData", Value(std::move(offered))));
    }

    const TemplateFolder& folder_;
    fs::path server_;
    const PublishOptions& options_;
    platform::FileLock lock_;
    Value configuration_;
    std::string version_;
};

}  // namespace

void publishTemplate(const fs::path& folder, const fs::path& serverFolder, const PublishOptions& options) {
    const TemplateFolder read = readTemplateFolder(folder);
    Publication(read, serverFolder, options).run();
}

}  // namespace multiscene
