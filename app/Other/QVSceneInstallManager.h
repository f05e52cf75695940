// Fetching templates and installing them in the background, with what a user is shown meanwhile.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/installation/TemplateInstallation.h"
#include "platform/base/DispatchQueue.h"
#include "platform/base/Error.h"

namespace multiscene {

/// Posted on the main queue when the background step of an installation has ended, however it ended.
inline constexpr const char* kSceneInstallSucceed = "kSceneInstallSucceed";

/// Shows the progress of an installation. Called on the main queue; every operation may be left out.
class SceneInstallDisplay {
  public:
    virtual ~SceneInstallDisplay() = default;
    /// `fraction` is from 0 to 1.
    virtual void showProgress(const std::string& /*text*/, double /*fraction*/) {}
    virtual void showInfo(const std::string& /*text*/) {}
    virtual void showError(const std::string& /*text*/) {}
    virtual void dismiss() {}
};

/// How an installation ended: a result, or the failure that stopped it.
struct InstallReport {
    InstallResult result;
    std::optional<platform::Error> failure;
};

/// Runs installations one after another on a background queue. The main queue must be pumped for the display,
/// the notification and the completions to arrive. Glossary: "Floder" is folder, "curent" is current.
class QVSceneInstallManager {
  public:
    using Completion = std::function<void(const InstallReport&)>;

    /// Installs into this catalogue.
    explicit QVSceneInstallManager(std::shared_ptr<QVDataManager> catalogue)
        : catalogue_(std::move(catalogue)) {}

    void setDisplay(std::weak_ptr<SceneInstallDisplay> display) { display_ = std::move(display); }
    /// Fraction of the running download, 0 to 1. Any thread.
    double curentProgress() const { return curentProgress_; }

    /// Downloads an archive, then installs it as installSceneWithZipPath does. The folder's name is the URL's
    /// last path component without its extension. A template that is installed already is not downloaded,
    /// unless to be replaced. A download that fails shows "Installation failed" and posts nothing.
    void installSceneZipWithUrl(const std::string& url, InstallOptions options, Completion completion);

    /// Installs an archive that lies on disk. `completion` is called on the main queue, after the
    /// notification.
    void installSceneWithZipPath(const std::string& zipPath, const std::string& withSceneFloderName,
                                 InstallOptions options, Completion completion);

    /// The background step itself, on the calling thread. Shows "Installation failed" when it fails. The
    /// archive is the caller's and stays; only what this manager has downloaded itself is deleted afterwards.
    InstallReport unZipAndInstallSceneWithZipPath(const std::string& zipPath,
                                                  const std::string& withSceneFloderName,
                                                  const InstallOptions& options);

  private:
    InstallReport guarded(const std::function<InstallResult()>& work);
    void download(TemplateInstallation& installation, const std::string& url, const InstallOptions& options);
    void tellProgress(double fraction);
    void show(std::function<void(SceneInstallDisplay&)> what);
    void finish(const InstallReport& report, bool notify, const Completion& completion);

    std::shared_ptr<QVDataManager> catalogue_;
    std::weak_ptr<SceneInstallDisplay> display_;
    std::atomic<double> curentProgress_ = 0;
    platform::DispatchQueue background_{"template installation"};
};

}  // namespace multiscene
