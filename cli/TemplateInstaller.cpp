#include "cli/TemplateInstaller.h"

#include <sys/stat.h>

#include <utility>

#include "app/installation/FolderSwap.h"
#include "app/language/Strings.h"
#include "app/server/UrlText.h"
#include "app/template/SceneJudge.h"
#include "cli/CatalogueCommand.h"
#include "cli/ToldTemplate.h"
#include "other/QVUtil.h"
#include "platform/base/Activity.h"
#include "platform/base/Clock.h"
#include "platform/base/PartFile.h"
#include "platform/base/PartFolder.h"
#include "platform/fence/Sandbox.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::Value;

namespace {

struct OutcomeText {
    const char* word;  ///< in JSON lines
    const char* before;
    const char* after;
    bool isInstalled;  ///< something was installed
};

OutcomeText textOf(InstallOutcome outcome) {
    switch (outcome) {
        case InstallOutcome::Installed:
            return {"installed", "installed ", "", true};
        case InstallOutcome::Replaced:
            return {"replaced", "installed ", " in place of the version of before", true};
        default:
            return {"alreadyInstalled", "nothing was installed: ",
                    " is installed already (--replace takes the archive's version)", false};
    }
}

/// An archive that was downloaded lies where no user knows it.
Error withPlace(const Error& failure, const fs::path& file, const std::string& url) {
    if (failure.file() != file.string()) return failure;
    return Error(failure.kind(), failure.message(), platform::withoutCredentials(url), failure.key());
}

/// Nothing where that is the job's own.
std::optional<platform::PartFolder> folderOnDiskOfScenes(const JobFolder& job) {
    const fs::path scenes = QVUtil::scenePath();
    struct stat here {
    }, there{};
    if (::stat(job.path().c_str(), &here) != 0 || ::stat(scenes.c_str(), &there) != 0 ||
        here.st_dev == there.st_dev)
        return std::nullopt;
    platform::removeAbandonedParts(scenes);
    return std::optional<platform::PartFolder>(std::in_place, scenes, "installing");
}

Error askingForUpdate(const Error& failure, const std::string& url) {
    if (failure.file() != platform::withoutCredentials(url) || failure.kind() != ErrorKind::Failed)
        return failure;
    return Error(ErrorKind::Failed,
                 failure.message() + " (the list of templates may be old: multiscene templates update)",
                 failure.file());
}

}  // namespace

InstallOptions committing(InstallOptions options, const Workplace& place) {
    options.onStep = [before = std::move(options.onStep), ask = place.ask](const char* step) {
        if (before) before(step);
        if (std::string_view(step) == "committed") ask({"committed"});
    };
    return options;
}

InstallOptions TemplateInstaller::options(const Workplace& place,
                                          std::optional<int64_t> offeredNumber) const {
    InstallOptions options;
    options.replace = replaces_;
    options.offeredNumber = offeredNumber;
    options.judge = [](const TemplateFolder& folder) {
        platform::activity::stage("judging the template", ErrorKind::Template);
        requirePlayableScenes(folder);
    };
    options.isCancelled = [stop = place.stop] { return stop.stop_requested(); };
    options.onStep = [](const char*) { platform::activity::sign(); };
    return options;
}

void TemplateInstaller::fromArchive(const fs::path& zip, const std::string& event) {
    install(zip, std::nullopt, event);
}

void TemplateInstaller::fromUrl(const std::string& url, std::optional<int64_t> offeredNumber,
                                const std::string& event) {
    const std::string name = templateNameOfUrl(url);
    if (!isTemplateName(name)) throw Error(ErrorKind::Template, "is no name that a template can have", name);
    fs::path file;
    try {
        file = downloaded(url, name);
    } catch (const Error& failure) {
        if (!offeredNumber) throw;
        throw askingForUpdate(failure, url);
    }
    try {
        install(file, offeredNumber, event);
    } catch (const Error& failure) {
        throw withPlace(failure, file, url);
    }
}

fs::path TemplateInstaller::downloaded(const std::string& url, const std::string& name) {
    const fs::path file = job_.file(name + ".zip");
    const Errand errand{platform::withoutCredentials(url), platform::reachOfNetwork(), job_.path()};
    fenced_.run(errand, [&](Workplace& place) {
        platform::activity::stage("downloading");
        platform::HttpDownloadOptions transfer;
        transfer.maxBytes = InstallOptions().limits.maxArchiveBytes;
        transfer.isCancelled = [&place] { return place.stop.stop_requested(); };
        transfer.progress = [&place, start = platform::monotonicSeconds()](uint64_t received,
                                                                           uint64_t total) {
            place.console.downloadProgress(received, total, platform::monotonicSeconds() - start);
        };
        platform::downloadToFile(url, file, transfer);
        return 0;
    });
    return file;
}

void TemplateInstaller::install(const fs::path& zip, std::optional<int64_t> offeredNumber,
                                const std::string& event) {
    const std::string name = zip.stem().string();
    // It moves in as a whole, which only a folder of the same disk can.
    const std::optional<platform::PartFolder> nearby = folderOnDiskOfScenes(job_);
    const fs::path workshop = nearby ? nearby->path() : job_.path();
    const fs::path unpacked = workshop / "unpacked";
    ToldTemplate told(name, unpacked / name);
    Errand errand{zip.string(), {}, workshop};
    errand.reach.read.push_back(zip);
    fenced_.run(
        errand,
        [&](Workplace& place) {
            place.console.status(localizedString("Template installation ing"));
            platform::activity::stage("unpacking", ErrorKind::Template);
            platform::activity::reading(zip.string(), ErrorKind::Template);
            const UnpackedTemplate found =
                TemplateInstallation::unpack(zip, name, unpacked, options(place, offeredNumber));
            if (!found.folder) throw Error(ErrorKind::Template, found.remark, zip.string());
            tellRecords(*found.folder, place);
            return 0;
        },
        [&](const std::vector<std::string>& request) { told.hear(request); });
    const TemplateFolder& folder = told.folder();
    InstallResult made{InstallOutcome::Installed, name, {}, ""};
    for (const QVTempletDataModel& record : folder.records) made.sIds.push_back(record.sId());
    errand.change =
        CatalogueChange{[name, identity = folderIdentity(folder.folder)](QVDataManager& catalogue) {
                            return TemplateInstallation::isMade(catalogue, name, identity);
                        },
                        [&](Console& console) { tell(console, made, event); }};
    fenced_.run(
        errand,
        [&](Workplace& place) {
            platform::activity::stage("installing");
            const auto catalogue = openCatalogue();
            TemplateInstallation installation(*catalogue, name,
                                              committing(options(place, offeredNumber), place));
            tell(place.console, installation.takeIn(folder, zip), event);
            return 0;
        },
        [&](const std::vector<std::string>&) { fenced_.commit(); });
    std::error_code ignored;
    fs::remove_all(unpacked, ignored);
}

void TemplateInstaller::tell(Console& console, const InstallResult& result, const std::string& event) {
    const OutcomeText text = textOf(result.outcome);
    if (!console.isJson())
        return console.status(text.before + result.name + " (" + std::to_string(result.sIds.front()) + ")" +
                              text.after);
    console.event(event, {{"outcome", text.word},
                          {"installed", text.isInstalled},
                          {"name", result.name},
                          {"ids", Value::Array(result.sIds.begin(), result.sIds.end())}});
}

}  // namespace multiscene::cli
