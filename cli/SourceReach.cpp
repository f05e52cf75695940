#include "cli/SourceReach.h"

#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"

namespace multiscene::cli {

namespace fs = std::filesystem;
using platform::Value;

namespace {

/// The user's own list, read here because only the user says which files are inputs. What is wrong with it is
/// told by the job.
void addListed(const fs::path& mediaFile, std::vector<fs::path>& paths) {
    try {
        const auto bytes = platform::readFile(mediaFile, platform::limitOf("maxMediaFileBytes"));
        const Value list = platform::parseJson(std::string(bytes.begin(), bytes.end()), mediaFile.string());
        if (!list.isDictionary()) return;
        for (const auto& [key, value] : list.dictionary()) {
            const std::string name = value.isDictionary() ? value.string("file") : value.stringValue();
            const fs::path path = mediaFile.parent_path() / name;
            if (!name.empty() && platform::isFile(path)) paths.push_back(path);
        }
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
    }
}

}  // namespace

Errand errandOf(const std::string& source) {
    Errand errand;
    errand.source = source;
    const fs::path path(source);
    const bool isSceneFile = path.extension() == ".plist" && platform::isFile(path);
    if (platform::isThere(path))
        errand.reach.read.push_back(isSceneFile ? fs::absolute(path).parent_path() : path);
    return errand;
}

Errand errandOf(const RenderRequest& request) {
    Errand errand = errandOf(request.source);
    std::vector<fs::path>& paths = errand.reach.read;
    for (const auto* given : {&request.inputs.photos, &request.inputs.videos})
        for (const JobInputs::Given& each : *given) paths.emplace_back(each.value);
    if (request.music) paths.emplace_back(*request.music);
    if (request.inputs.mediaFile.empty()) return errand;
    paths.push_back(request.inputs.mediaFile);
    addListed(request.inputs.mediaFile, paths);
    return errand;
}

}  // namespace multiscene::cli
