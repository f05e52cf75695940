#include "app/Check/SceneRules.h"

#include <array>

namespace multiscene {

std::span<const SceneRule> sceneRules() {
    static constexpr std::array table{
        rules::clockSaysItsEnd,
        rules::clockBeginsAtZero,
        rules::backgroundIsStretched,
        rules::rangesAreNotEmpty,
        rules::nodesBeginBeforeTheSceneEnds,
        rules::childrenBeginAfterTheirParents,
        rules::motionListsDoNotStall,
        rules::motionBeginsWithItsNode,
        rules::keyFrameListsDoNotStall,
        rules::overlappingMotionHasLength,
        rules::rotationsHaveBothEnds,
        rules::filesAreThere,
        rules::texturesSayWhatTheyShow,
        rules::nodesShowSomething,
        rules::sequencesHaveAllPictures,
        rules::fontFilesAreThere,
        rules::shadersBuild,
        rules::picturesAndSoundsAreReadable,
        rules::videosAreReadable,
    };
    return table;
}

}  // namespace multiscene
