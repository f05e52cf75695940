#include "app/job/JobJudgement.h"

#include <algorithm>

#include "app/check/CheckedFile.h"
#include "app/check/Judgement.h"
#include "platform/base/Error.h"
#include "sceneFile/SceneFile.h"
#include "sceneFile/SceneValidation.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;

namespace {

Judgement judgementOf(const Playable& playable, Playback& playback) {
    if (playable.isGroupFile)
        return judgeSceneGroup(playable.file.string(), playable.groupFile, playable.catalogue.get(),
                               playback);
    try {
        return judgeTemplate(
            playable.description ? *playable.description : readTemplateFolder(playable.templateFolder),
            playable.catalogue.get(), playback);
    } catch (const Error& error) {
        return {{findingOf(error, playable.templateFolder.string())}, {}};
    }
}

/// Whoever is told goes on reading; whoever is thrown at gets the same words.
Error errorOf(const Finding& finding) {
    const std::string remedy = finding.remedy.empty() ? "" : "; " + finding.remedy;
    return {ErrorKind::Template, finding.message + remedy, finding.file, finding.keyPath};
}

void tell(const Findings& findings, const RenderRequest& request, JobObserver& observer) {
    const auto ends = [&](const Finding& finding) {
        return finding.severity == Severity::Error ? !request.isForced : request.isStrict;
    };
    const auto fatal = std::find_if(findings.begin(), findings.end(), ends);
    for (auto finding = findings.begin(); finding != findings.end(); ++finding)
        if (finding != fatal) observer.jobFinding(*finding);
    if (fatal != findings.end()) throw errorOf(*fatal);
}

/// What even a forced job needs. Faults of the group are blamed on the file in which the author wrote it.
void requirePlayable(const Playable& playable) {
    try {
        SceneValidation::requirePlayable(playable.group, playable.file.string());
    } catch (const Error& error) {
        const bool isOfTheGroup = error.key() == "scene" || error.key().starts_with("scene[");
        if (playable.isGroupFile || !isOfTheGroup) throw;
        throw Error(error.kind(), error.message(), error.file(),
                    "installScenes[0].wechartTempletInfo.sceneGroup" + error.key().substr(5));
    }
}

}  // namespace

void judgeAloud(Playable& playable, const RenderRequest& request, Playback& playback, JobObserver& observer) {
    Judgement judgement;
    if (!request.isJudged) {
        judgement = judgementOf(playable, playback);
        tell(judgement.findings, request, observer);
    }
    readScenes(playable.group, judgement.scenes, playback.gate());
    if (request.isJudged || request.isForced) requirePlayable(playable);
}

}  // namespace multiscene
