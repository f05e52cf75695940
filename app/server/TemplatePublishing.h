#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "app/author/TemplatePacking.h"
#include "platform/store/FileLock.h"

namespace multiscene {

struct PublishOptions {
    TemplateJudge judge = {};
    /// Renders the preview video of a template from its sample inputs into a file. Absent: no preview.
    std::function<void(const TemplateFolder&, const std::filesystem::path& video)> renderPreview = {};
    /// Renders a picture for a template that brings no thumbnail, after the preview. Absent: no thumbnail
    /// then.
    std::function<void(const TemplateFolder&, const std::filesystem::path& picture)> renderThumbnail = {};
    /// Put before the locations in the configuration; empty: they are relative to the server's address.
    std::string baseUrl;
    /// Absent: what the template's own file says. Else the archive says it too.
    std::optional<float> minVersion = {};
    bool isNew = true;
};

/// Makes a folder that any static HTTP server can offer: the template's archive under "templates/", its
/// thumbnail and preview under "thumbnails/" and "previews/", in a folder for each version, and its entry in
/// "severConfig/info1-1.plist", which is written last: what the list names is always there and belongs
/// together. An entry of the same number and name is replaced, and the files of all but the last two versions
/// are removed; everything else in the configuration is kept; several programs may publish at once. Throws
/// Error, and then the list is as before: Template when the template is at fault or its number is another
/// template's.
void publishTemplate(const std::filesystem::path& folder, const std::filesystem::path& serverFolder,
                     const PublishOptions& options = {});

/// The parts of publishTemplate(), for a program that lets another process read the template. Whoever holds
/// the lock stages and publishes. lockServerFolder() makes the folder where it is missing; throws
/// Error(Transient) when another program publishes there for too long, and Cancelled.
platform::FileLock lockServerFolder(const std::filesystem::path& serverFolder,
                                    const std::function<bool()>& isCancelled = {});
/// Makes all files in `stage`, laid out as on the server, and changes nothing in the server's folder.
void stageTemplate(const std::filesystem::path& folder, const std::filesystem::path& serverFolder,
                   const std::filesystem::path& stage, const PublishOptions& options = {});
/// Moves what was staged for the template `name` into its places, and nothing else.
void publishStaged(const std::filesystem::path& stage, const std::filesystem::path& serverFolder,
                   const std::string& name);

}  // namespace multiscene
