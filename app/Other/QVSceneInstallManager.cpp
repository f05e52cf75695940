#include "app/Other/QVSceneInstallManager.h"

#include "app/language/Strings.h"
#include "app/server/UrlText.h"
#include "platform/base/CurrentError.h"
#include "platform/base/File.h"
#include "platform/base/NotificationCenter.h"
#include "platform/net/HttpDownload.h"

namespace multiscene {

using platform::DispatchQueue;
using platform::Error;

namespace {

constexpr double kSmallestShownFraction = 0.01;

/// Deletes a file at the end of a block.
struct DeletedAfterwards {
    std::filesystem::path file;
    ~DeletedAfterwards() {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    }
};

}  // namespace

void QVSceneInstallManager::show(std::function<void(SceneInstallDisplay&)> what) {
    DispatchQueue::main().async([display = display_, what = std::move(what)] {
        if (const auto shown = display.lock()) what(*shown);
    });
}

void QVSceneInstallManager::tellProgress(double fraction) {
    curentProgress_ = fraction;
    if (fraction <= kSmallestShownFraction) return;
    show([fraction](SceneInstallDisplay& display) {
        display.showProgress(localizedString("Template download"), fraction);
    });
}

InstallReport QVSceneInstallManager::guarded(const std::function<InstallResult()>& work) {
    try {
        return {work(), std::nullopt};
    } catch (...) {
        const Error failure = platform::currentError();
        show([](SceneInstallDisplay& display) { display.showError(localizedString("Installation failed")); });
        return {{}, failure};
    }
}

void QVSceneInstallManager::installSceneZipWithUrl(const std::string& url, InstallOptions options,
                                                   Completion completion) {
    background_.async([this, url, options = std::move(options), completion = std::move(completion)] {
        bool reachesInstallation = false;
        const InstallReport report = guarded([&] {
            TemplateInstallation installation(*catalogue_, templateNameOfUrl(url), options);
            if (const auto known = options.replace ? std::nullopt : installation.alreadyInstalled()) {
                reachesInstallation = true;
                return *known;
            }
            download(installation, url, options);
            reachesInstallation = true;
            const DeletedAfterwards archive{installation.archivePath()};
            show([](SceneInstallDisplay& display) {
                display.showInfo(localizedString("Template installation ing"));
            });
            return installation.install(archive.file);
        });
        finish(report, reachesInstallation, completion);
    });
}

void QVSceneInstallManager::download(TemplateInstallation& installation, const std::string& url,
                                     const InstallOptions& options) {
    curentProgress_ = 0;
    platform::HttpDownloadOptions transfer;
    transfer.maxBytes = options.limits.maxArchiveBytes;
    transfer.isCancelled = options.isCancelled;
    transfer.progress = [&](uint64_t received, uint64_t total) {
        if (options.onStep) options.onStep("downloading");
        if (options.onReceived) options.onReceived(received, total);
        if (total > 0) tellProgress(static_cast<double>(received) / static_cast<double>(total));
    };
    platform::downloadToFile(url, installation.partialDownloadPath(), transfer);
    if (options.onStep) options.onStep("downloaded");
    platform::moveFile(installation.partialDownloadPath(), installation.archivePath());
    if (options.onStep) options.onStep("archive moved");
}

void QVSceneInstallManager::installSceneWithZipPath(const std::string& zipPath,
                                                    const std::string& withSceneFloderName,
                                                    InstallOptions options, Completion completion) {
    show(
        [](SceneInstallDisplay& display) { display.showInfo(localizedString("Template installation ing")); });
    background_.async([this, zipPath, withSceneFloderName, options = std::move(options),
                       completion = std::move(completion)] {
        finish(unZipAndInstallSceneWithZipPath(zipPath, withSceneFloderName, options), true, completion);
    });
}

InstallReport QVSceneInstallManager::unZipAndInstallSceneWithZipPath(const std::string& zipPath,
                                                                     const std::string& withSceneFloderName,
                                                                     const InstallOptions& options) {
    return guarded(
        [&] { return TemplateInstallation(*catalogue_, withSceneFloderName, options).install(zipPath); });
}

void QVSceneInstallManager::finish(const InstallReport& report, bool notify, const Completion& completion) {
    DispatchQueue::main().async([display = display_, report, notify, completion] {
        if (const auto shown = display.lock()) shown->dismiss();
        if (notify) platform::NotificationCenter::shared().post(kSceneInstallSucceed);
        if (completion) completion(report);
    });
}

}  // namespace multiscene
