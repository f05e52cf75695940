#include "app/check/SceneRules.h"

#include <array>

namespace multiscene {

std::span<const SceneRule> sceneRules() {
    static constexpr std::array table{
        rules::clockSaysItsEnd,
        rules::clockBeginsAtZero,
        rules::backgroundIsStretched,
        rules::camerasSeeSomething,
        rules::rangesAreNotEmpty,
        rules::nodesBeginBeforeTheSceneEnds,
        rules::childrenBeginAfterTheirParents,
        rules::childrenBeginBeforeTheirParentsEnd,
        rules::componentsBeginBeforeTheSceneEnds,
        rules::componentsBeginWhileTheirNodeIsThere,
        rules::lookedUpNumbersAreInputs,
        rules::motionListsDoNotStall,
        rules::motionBeginsWithItsNode,
        rules::motionBeginsBeforeItsNodeEnds,
        rules::keyFrameListsDoNotStall,
        rules::overlappingMotionHasLength,
        rules::lettersFitTogether,
        rules::rotationsHaveBothEnds,
        rules::curvesCanBeUsed,
        rules::easesAndPathsAreThere,
        rules::boxesHaveASize,
        rules::nodesLieWhereTheCameraSees,
        rules::drawingIsSpecifiedWhole,
        rules::renderedTexturesAreThere,
        rules::keysDoWhatTheySay,
        rules::depthTestsReachTheirChildren,
        rules::filtersMoveWhatTheyHave,
        rules::filesAreThere,
        rules::nodesShowSomething,
        rules::sequencesHaveAllPictures,
        rules::fontsAreThere,
        rules::shadersBuild,
        rules::mediaFilesAreReadable,
        rules::videosAreReadable,
    };
    return table;
}

}  // namespace multiscene
