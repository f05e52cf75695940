// Changing which templates are installed, so that at any moment a template is there with all of its files and
// rows or not at all, whenever the program may be killed and however many of them run.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/data/InstallJournal.h"
#include "app/data/InstalledArchives.h"
#include "app/template/TemplateFolder.h"
#include "platform/archive/ZipLimits.h"
#include "platform/store/FileLock.h"

namespace multiscene {

enum class InstallOutcome { Installed, Replaced, AlreadyInstalled, NothingInstalled, Removed };

struct InstallResult {
    InstallOutcome outcome = InstallOutcome::NothingInstalled;
    std::string name;           ///< the template's folder
    std::vector<int64_t> sIds;  ///< its scenes, the template's own first
    std::string remark;         ///< why nothing was installed
};

/// Whether a change could be neither made nor undone, as when a disk fails for good in the midst of it. Which
/// of the two it is turns out when recover() succeeds; the template is whole then in either case. Told by the
/// words, which come from other processes too.
bool isUnsettled(const platform::Error& failure);
/// The same failure, told so.
platform::Error unsettled(const platform::Error& failure);

struct InstallOptions {
    bool replace = false;  ///< an installed template of the same name makes way
    platform::ZipLimits limits = {};
    /// How long to wait for programs that change the template or make a video with it.
    std::chrono::milliseconds patience = std::chrono::seconds(60);
    std::function<bool()> isCancelled = {};
    /// The number under which a server offers the template; see alreadyInstalled().
    std::optional<int64_t> offeredNumber = {};
    /// A further judgement of the unpacked folder before it moves in; throws platform::Error to refuse it.
    std::function<void(const TemplateFolder&)> judge = {};
    /// Bytes of a download so far, and in all or 0 when the server does not say. On the background queue.
    std::function<void(uint64_t received, uint64_t total)> onReceived = {};
    /// Told the name of each step when it is done; for tests that end the program there.
    std::function<void(const char* step)> onStep = {};
};

/// What an archive holds, judged as far as that goes without knowing what is installed.
struct UnpackedTemplate {
    std::optional<TemplateFolder> folder;
    std::string remark;  ///< why there is no folder
};

/// One change of one template; holds the template's lock while it lives, and has first put right what a
/// killed change of this template left.
class TemplateInstallation {
  public:
    /// Waits for another change of the same template. Throws Error: Template for a name that no folder may
    /// have, Transient when the other change takes too long.
    TemplateInstallation(QVDataManager& catalogue, const std::string& name, InstallOptions options = {});

    /// What install() would find without `replace`, known before an archive is fetched: nothing unless the
    /// template is installed, with the offered number where there is one.
    std::optional<InstallResult> alreadyInstalled();
    /// The same for whoever changes nothing.
    static std::optional<InstallResult> alreadyInstalled(QVDataManager& catalogue, const std::string& name,
                                                         std::optional<int64_t> offeredNumber);

    /// Unpacks an archive that holds NAME/NAME.plist, judges it, and moves it in. The archive itself is left
    /// alone; what it holds outside NAME/ is ignored. Throws Error, and then nothing has changed: Template
    /// for an archive or template at fault, or a scene number that another template owns; Transient while
    /// videos are made with the template; Failed when it needs a newer program.
    InstallResult install(const std::filesystem::path& archive);

    /// The two halves of install(), for a program that lets another process read what the archive holds.
    /// unpack() writes `into`/NAME and nowhere else, and asks no catalogue. takeIn() reads no file of the
    /// template and believes nothing of what unpack() is said to have found, but what "installScenes" says;
    /// `archive` is what it came from.
    static UnpackedTemplate unpack(const std::filesystem::path& archive, const std::string& name,
                                   const std::filesystem::path& into, const InstallOptions& options = {});
    InstallResult takeIn(const TemplateFolder& unpacked, const std::filesystem::path& archive);

    /// Takes the template's rows and files away. Throws Error(Template) when it is not installed.
    InstallResult remove();

    /// What became of a change whose program was killed, after recover(): whether the folder of that identity
    /// is installed, or, when it is empty, nothing is. Nothing while that is not settled.
    static std::optional<bool> isMade(QVDataManager& catalogue, const std::string& name,
                                      const std::string& newIdentity);

    /// Where a download of this template is kept while it is fetched, and when it is complete.
    std::filesystem::path partialDownloadPath() const;
    std::filesystem::path archivePath() const;

    /// Finishes or undoes every change that a killed program left, and removes its leftovers. Called at the
    /// start of the program. Templates that another program is changing at this moment, and what cannot be
    /// put right because the data home cannot be written, are passed over.
    static void recover(QVDataManager& catalogue);

  private:
    TemplateInstallation(QVDataManager& catalogue, const std::string& name, platform::FileLock lock);

    static void recoverOne(QVDataManager& catalogue, const std::string& name);
    void step(const char* name) const;
    platform::FileLock aloneWithFiles();
    void recoverThis();
    void clearLeftovers();
    std::vector<int64_t> installedNumbers();
    void refuseForeignNumbers(const TemplateFolder& folder);
    void stage(const TemplateFolder& unpacked);
    InstallResult judged(const TemplateFolder& folder);
    bool hasOwnFile() const;
    void moveIn(const TemplateFolder& folder, const std::string& digest);
    void change(const std::string& newIdentity, const std::function<void(platform::Database&)>& changeRows);
    void undo(const platform::Error& failure);
    void announce(const std::string& newIdentity);
    void tidyUp();

    std::filesystem::path finalFolder() const;
    std::filesystem::path stagingFolder() const;
    std::filesystem::path stagedFolder() const { return stagingFolder() / name_; }

    QVDataManager& catalogue_;
    InstallJournal journal_;
    InstalledArchives archives_;
    std::string name_;
    InstallOptions options_;
    platform::FileLock lock_;
};

}  // namespace multiscene
