#include "app/catalogue/TemplateOverview.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "app/Other/QVDownloadInfoManager.h"
#include "app/catalogue/InstalledTemplates.h"
#include "app/catalogue/SampleTemplates.h"
#include "app/data/InstalledArchives.h"
#include "app/language/LocalizedName.h"
#include "app/server/UrlText.h"
#include "app/template/TemplateLength.h"
#include "other/QVUtil.h"
#include "platform/base/File.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr double kBytesPerMegabyte = 1024.0 * 1024.0;

double megabytesIn(const fs::path& folder) {
    uintmax_t bytes = 0;
    std::error_code failure;
    for (const auto& entry : fs::recursive_directory_iterator(folder, failure))
        if (entry.is_regular_file(failure)) bytes += entry.file_size(failure);
    return static_cast<double>(bytes) / kBytesPerMegabyte;
}

/// A record's path as one below the template's folder; empty for a file that is not there, or elsewhere.
std::string ownFile(const std::string& path, const fs::path& folder) {
    const std::string whole =
        path.starts_with("$(") ? QVUtil::multiScenePathWithString(path, folder.parent_path().string() + "/")
                               : path;
    const std::string own =
        fs::path(whole).lexically_normal().lexically_relative(folder.lexically_normal()).string();
    return own.empty() || own.starts_with("..") || own == "." || !platform::isFile(folder / own) ? "" : own;
}

bool hasMusic(const QVTempletDataModel& main, const fs::path& folder) {
    return !main.bgAudioPath().empty() || platform::isFile(folder / TemplateFolder::usualMusic);
}

void nameIt(TemplateOverview& overview, const Value& names) {
    overview.titles = nameInEachLanguage(names);
    overview.title = nameInUserLanguage(names);
}

TemplateOverview overviewOf(const std::vector<QVTempletDataModel>& records, const std::string& name,
                            const Value& names, const fs::path& folder, SceneCatalogue* others) {
    const QVTempletDataModel& main = records.front();
    TemplateOverview overview;
    overview.sId = main.sId();
    overview.name = name;
    nameIt(overview, names);
    overview.hasMusic = hasMusic(main, folder);
    overview.thumbnail = ownFile(main.sceneThumbnailPath(), folder);
    overview.frames = lengthInFrames(records, others);
    overview.photos = photosWanted(main);
    overview.format = main.mediaFormat();
    overview.inputs = main.userInputInfo();
    overview.folder = folder.string();
    overview.megabytes = megabytesIn(folder);
    overview.videoPreviewUrl = main.videoPreviewUrl();
    overview.youtubePreviewUrl = main.youtubePreviewUrl();
    return overview;
}

TemplateOverview overviewOf(const InstalledTemplate& installed, SceneCatalogue& catalogue) {
    TemplateOverview overview = overviewOf(installed.records, installed.name, namesOf(installed),
                                           QVUtil::scenePath() + installed.name, &catalogue);
    overview.isInstalled = true;
    return overview;
}

bool isNamed(const TemplateOverview& overview, const std::string& numberOrName) {
    return std::to_string(overview.sId) == numberOrName || overview.name == numberOrName ||
           overview.title == numberOrName;
}

/// Those in whose place no template is installed.
void addSamples(std::vector<TemplateOverview>& overviews, SceneCatalogue& catalogue) {
    for (const TemplateFolder& sample : sampleTemplates()) {
        const bool isInstalled = std::any_of(overviews.begin(), overviews.end(), [&](const auto& each) {
            return each.isInstalled && each.name == sample.name;
        });
        if (isInstalled) continue;
        overviews.push_back(overviewOf(sample, &catalogue));
        overviews.back().isSample = true;
    }
}

/// What only the server knows, on top of what is installed, of which `archives` holds the digests.
void addOffer(TemplateOverview& overview, const QVSeverTempletDataModel& offered,
              const std::map<std::string, std::string>& archives, const QVDownloadInfoManager& server) {
    const auto complete = [&](const std::string& location) {
        return location.empty() ? location : server.completeUrl(location);
    };
    overview.isOffered = true;
    overview.isNew = offered.isNew();
    const auto installed = archives.find(overview.name);
    overview.newerOffered = overview.isInstalled && !offered.archiveDigest().empty() &&
                            (installed == archives.end() || installed->second != offered.archiveDigest());
    overview.minVersion = offered.minVersion();
    overview.needsNewerVersion = !offered.isVersionSupported();
    overview.megabytes = offered.templateSize();
    overview.templateUrl = complete(offered.templateUrl());
    overview.thumbUrl = complete(offered.thumbUrl());
    if (!offered.videoPreviewUrl().empty()) overview.videoPreviewUrl = complete(offered.videoPreviewUrl());
    if (!offered.youtubePreviewUrl().empty())
        overview.youtubePreviewUrl = complete(offered.youtubePreviewUrl());
}

TemplateOverview overviewOf(const QVSeverTempletDataModel& offered) {
    TemplateOverview overview;
    overview.sId = offered.sId();
    overview.name = templateNameOfUrl(offered.templateUrl());
    nameIt(overview, offered.muName());
    overview.frames = offered.fpsLength();
    overview.photos = std::max(offered.photoTotal(), photosWanted(offered.userInputInfo()));
    overview.format = offered.mediaFormat();
    overview.inputs = offered.userInputInfo();
    return overview;
}

}  // namespace

TemplateOverview overviewOf(const TemplateFolder& folder, SceneCatalogue* others) {
    const Value names = namesInDescription(folder.description);
    return overviewOf(folder.records, folder.name,
                      nameInUserLanguage(names).empty() ? Value(folder.name) : names, folder.folder, others);
}

std::vector<TemplateOverview> templateOverviews(QVDataManager& catalogue,
                                                const QVDownloadInfoManager& server) {
    std::vector<TemplateOverview> overviews;
    for (const InstalledTemplate& installed : installedTemplates(catalogue))
        overviews.push_back(overviewOf(installed, catalogue));
    addSamples(overviews, catalogue);
    const auto archives = InstalledArchives(catalogue).digests();
    for (const QVSeverTempletDataModel& offered : server.severTemplets()) {
        TemplateOverview overview = overviewOf(offered);
        const auto known = std::find_if(overviews.begin(), overviews.end(), [&](const auto& each) {
            return each.name == overview.name && each.sId == overview.sId;
        });
        addOffer(known == overviews.end() ? overviews.emplace_back(std::move(overview)) : *known, offered,
                 archives, server);
    }
    return overviews;
}

std::optional<TemplateOverview> findTemplateOverview(QVDataManager& catalogue,
                                                     const QVDownloadInfoManager& server,
                                                     const std::string& numberOrName) {
    const auto installed = findInstalledTemplate(catalogue, numberOrName);
    const auto sample = installed ? std::nullopt : findSampleTemplate(numberOrName);
    for (TemplateOverview& overview : templateOverviews(catalogue, server)) {
        const bool isWanted = installed ? overview.isInstalled && overview.name == installed->name
                              : sample  ? overview.isSample && overview.name == sample->name
                                        : isNamed(overview, numberOrName);
        if (isWanted) return std::move(overview);
    }
    return std::nullopt;
}

}  // namespace multiscene
