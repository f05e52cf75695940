#include "app/template/SceneJudge.h"

#include "other/QVUtil.h"
#include "platform/base/Error.h"
#include "platform/base/FileGate.h"
#include "sceneFile/SceneFile.h"
#include "sceneFile/SceneValidation.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;

namespace {

/// Messages name files as the author knows them, "NAME/scene.plist", not where they lie at the moment.
Error withShortName(const Error& error, const TemplateFolder& folder) {
    const fs::path file = fs::path(error.file()).lexically_relative(folder.folder.parent_path());
    return Error(error.kind(), error.message(), file.empty() ? error.file() : file.string(), error.key());
}

}  // namespace

fs::path fileInFolder(const TemplateFolder& folder, const std::string& macroPath) {
    const fs::path complete = fs::path(QVUtil::multiScenePathWithString(macroPath)).lexically_normal();
    const fs::path own = fs::path(QVUtil::scenePath()).lexically_normal() / folder.name;
    return folder.folder / complete.lexically_relative(own);
}

void requirePlayableScenes(const TemplateFolder& folder) {
    platform::FileGate gate;
    gate.allowFolder(folder.folder);
    for (const QVTempletDataModel& record : folder.records) {
        const std::string file = fileInFolder(folder, record.scenePlistPath()).string();
        try {
            const auto problems = SceneValidation::sceneProblems(readSceneFile(file, gate), file);
            if (!problems.empty()) throw Error(problems.front());
        } catch (const Error& error) {
            throw withShortName(error, folder);
        }
    }
}

}  // namespace multiscene
