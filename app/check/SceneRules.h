// What a scene file can get wrong beyond single keys. One idea a function; all of them are listed in
// sceneRules().
#pragma once

#include <span>

#include "app/check/Finding.h"
#include "app/check/SceneView.h"

namespace multiscene {

using SceneRule = void (*)(const SceneView&, Findings&);

std::span<const SceneRule> sceneRules();

namespace rules {

// ClockRules.cpp
void clockSaysItsEnd(const SceneView&, Findings&);
void clockBeginsAtZero(const SceneView&, Findings&);
void backgroundIsStretched(const SceneView&, Findings&);

// RangeRules.cpp
void rangesAreNotEmpty(const SceneView&, Findings&);
void nodesBeginBeforeTheSceneEnds(const SceneView&, Findings&);
void childrenBeginAfterTheirParents(const SceneView&, Findings&);
void childrenBeginBeforeTheirParentsEnd(const SceneView&, Findings&);
void componentsBeginBeforeTheSceneEnds(const SceneView&, Findings&);
void componentsBeginWhileTheirNodeIsThere(const SceneView&, Findings&);

// MotionRules.cpp
void motionListsDoNotStall(const SceneView&, Findings&);
void motionBeginsWithItsNode(const SceneView&, Findings&);
void motionBeginsBeforeItsNodeEnds(const SceneView&, Findings&);
void keyFrameListsDoNotStall(const SceneView&, Findings&);
void overlappingMotionHasLength(const SceneView&, Findings&);
void rotationsHaveBothEnds(const SceneView&, Findings&);

// LetterRules.cpp
void lettersFitTogether(const SceneView&, Findings&);

// CurveRules.cpp
void curvesCanBeUsed(const SceneView&, Findings&);
void easesAndPathsAreThere(const SceneView&, Findings&);

// NodeRules.cpp
void boxesHaveASize(const SceneView&, Findings&);
void camerasSeeSomething(const SceneView&, Findings&);
void lookedUpNumbersAreInputs(const SceneView&, Findings&);
void renderedTexturesAreThere(const SceneView&, Findings&);
void drawingIsSpecifiedWhole(const SceneView&, Findings&);

// DepthRules.cpp
void nodesLieWhereTheCameraSees(const SceneView&, Findings&);

// EffectRules.cpp
void keysDoWhatTheySay(const SceneView&, Findings&);
void depthTestsReachTheirChildren(const SceneView&, Findings&);

// FilterRules.cpp
void filtersMoveWhatTheyHave(const SceneView&, Findings&);

// FileRules.cpp
void filesAreThere(const SceneView&, Findings&);

// TextureRules.cpp
void nodesShowSomething(const SceneView&, Findings&);
void sequencesHaveAllPictures(const SceneView&, Findings&);
void fontsAreThere(const SceneView&, Findings&);

// ShaderRules.cpp
void shadersBuild(const SceneView&, Findings&);

// MediaRules.cpp
void mediaFilesAreReadable(const SceneView&, Findings&);
void videosAreReadable(const SceneView&, Findings&);

}  // namespace rules
}  // namespace multiscene
