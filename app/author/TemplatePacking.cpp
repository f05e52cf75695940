#include "app/author/TemplatePacking.h"

#include "platform/archive/ZipArchive.h"
#include "platform/archive/ZipWriter.h"
#include "platform/base/Error.h"
#include "platform/base/PartFile.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::Value;
namespace fs = std::filesystem;

namespace {

bool isHidden(const fs::path& file) { return file.filename().string().starts_with("."); }

std::vector<platform::ZipSource> filesOf(const TemplateFolder& folder) {
    std::vector<platform::ZipSource> files;
    for (auto entry = fs::recursive_directory_iterator(folder.folder); entry != fs::end(entry); ++entry) {
        if (isHidden(entry->path())) {
            entry.disable_recursion_pending();
            continue;
        }
        const fs::file_type type = entry->symlink_status().type();
        if (type == fs::file_type::directory) continue;
        if (type != fs::file_type::regular)
            throw Error(ErrorKind::Template, "is a link or a special file; a template holds plain files only",
                        entry->path().string());
        const fs::path relative = entry->path().lexically_relative(folder.folder);
        files.push_back({(fs::path(folder.name) / relative).generic_string(), entry->path()});
    }
    return files;
}

/// A file that goes away unless it has been moved to its final name.
struct Provisional {
    fs::path file;
    ~Provisional() {
        std::error_code ignored;
        fs::remove(file, ignored);
    }
};

/// Writes the template's own file, with that version in it, to `file`.
fs::path withMinVersion(const TemplateFolder& folder, float minVersion, const fs::path& file) {
    const Value version(static_cast<double>(minVersion));
    platform::writePropertyList(file, folder.description.with("minVersion", version));
    return file;
}

void replace(std::vector<platform::ZipSource>& files, const fs::path& file, const fs::path& by) {
    for (platform::ZipSource& each : files)
        if (each.file == file) each.file = by;
}

/// Whoever installs the archive will judge it like this.
void requireInstallable(const fs::path& archive, const fs::path& folder) {
    try {
        const platform::ZipArchive written(archive);
    } catch (const Error& fault) {
        throw Error(fault.kind(), fault.message(), folder.string(), fault.key());
    }
}

}  // namespace

uint64_t packTemplate(const fs::path& folder, const fs::path& archive, const TemplateJudge& judge,
                      std::optional<float> minVersion) {
    const TemplateFolder read = readTemplateFolder(folder);
    if (!isTemplateName(read.name))
        throw Error(ErrorKind::Template, "is no name that a template can have", read.name);
    requireOwnPaths(read);
    if (judge) judge(read);
    const fs::path target = fs::absolute(archive);
    const Provisional ownFile{target.parent_path() / (".pack-" + platform::uniqueIdentifier() + ".plist")};
    std::vector<platform::ZipSource> files = filesOf(read);
    if (minVersion && *minVersion != read.minVersion())
        replace(files, read.plistPath(), withMinVersion(read, *minVersion, ownFile.file));
    platform::removeAbandonedParts(target.parent_path());
    return platform::writeZip(target, std::move(files),
                              [&](const fs::path& written) { requireInstallable(written, read.folder); });
}

}  // namespace multiscene
