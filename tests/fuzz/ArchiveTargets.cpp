// Archives: read, unpacked, installed.
#include <sys/stat.h>

#include "app/data/QVDataManager.h"
#include "app/installation/TemplateInstallation.h"
#include "app/template/TemplateArchive.h"
#include "platform/archive/ZipArchive.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Scratch.h"

namespace multiscene::fuzz {

namespace fs = std::filesystem;

namespace {

platform::ZipLimits smallLimits() {
    platform::ZipLimits limits;
    limits.maxEntries = 64;
    limits.maxEntryBytes = 1 << 20;
    limits.maxTotalBytes = 2 << 20;
    return limits;
}

void requirePlainFiles(const fs::path& folder) {
    for (const fs::directory_entry& each : fs::recursive_directory_iterator(folder)) {
        require(each.is_directory() || each.symlink_status().type() == fs::file_type::regular,
                "only plain files are unpacked");
        const auto permissions = each.symlink_status().permissions();
        require(each.is_directory() || (permissions & fs::perms::owner_exec) == fs::perms::none,
                "nothing that is unpacked can be run");
    }
}

}  // namespace

void playZip(Bytes bytes) {
    const fs::path folder = emptyScratch("zip"), archive = folder / "fuzz.zip",
                   unpacked = folder / "unpacked";
    fs::create_directory(unpacked);
    writeFile(archive, bytes);
    isTaken([&] {
        platform::ZipArchive zip(archive, platform::ErrorKind::Template, smallLimits());
        isTaken([&] { onlyFolderOf(zip, "fuzz.zip"); });
        zip.extract(unpacked);
    });
    require(std::distance(fs::directory_iterator(folder), fs::directory_iterator()) == 2,
            "nothing is unpacked elsewhere");
    requirePlainFiles(unpacked);
}

void playInstallation(Bytes bytes) {
    static QVDataManager catalogue = [] {
        scratchFolder();
        QVUtil::createMultiSceneLocalPaths();
        return QVDataManager();
    }();
    const fs::path archive = scratchFolder() / "t.zip";
    writeFile(archive, bytes);
    const auto options = [] { return InstallOptions{.replace = true, .limits = smallLimits()}; };
    const bool isInstalled =
        isTaken([&] { TemplateInstallation(catalogue, "t", options()).install(archive); });
    const fs::path folder = fs::path(QVUtil::scenePath()) / "t";
    if (isInstalled) {
        requirePlainFiles(folder);
        TemplateInstallation(catalogue, "t", options()).remove();
    }
    require(!fs::exists(folder), "a template that is not installed has no folder");
}

}  // namespace multiscene::fuzz
