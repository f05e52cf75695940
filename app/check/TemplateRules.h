// What a template and a group of scenes can get wrong as a whole. One idea a function.
#pragma once

#include <span>

#include "app/check/Finding.h"
#include "app/check/TemplateView.h"

namespace multiscene {

using TemplateRule = void (*)(const TemplateView&, Findings&);
using GroupRule = void (*)(const GroupView&, Findings&);

std::span<const TemplateRule> templateRules();
std::span<const GroupRule> groupRules();

namespace rules {

// TemplateRules.cpp
void lengthsAreTheClocks(const TemplateView&, Findings&);
void sceneGroupIsNotEmpty(const TemplateView&, Findings&);
void numbersAreUnique(const TemplateView&, Findings&);
void resourceFoldersAreFolders(const TemplateView&, Findings&);
void thumbnailsAreThere(const TemplateView&, Findings&);
void pictureSizeCanBeWritten(const TemplateView&, Findings&);
void camerasHaveThePicturesShape(const TemplateView&, Findings&);
void videosHaveTheTemplatesRate(const TemplateView&, Findings&);
void musicCanBePlayed(const TemplateView&, Findings&);

// InputRules.cpp
void inputTypesAreKnown(const TemplateView&, Findings&);
void inputKeysAreUnique(const TemplateView&, Findings&);
void inputKeysAreFree(const TemplateView&, Findings&);
void photoShapesAreWhole(const TemplateView&, Findings&);
void inputsAreUsed(const TemplateView&, Findings&);

// GroupRules.cpp
void groupHasScenes(const GroupView&, Findings&);
void scenesAreInTheCatalogue(const GroupView&, Findings&);
void transitionsFitTheirScenes(const GroupView&, Findings&);
void transitionsLeadToAScene(const GroupView&, Findings&);
void sceneTexturesAreInTransitions(const GroupView&, Findings&);
void overlaysEndBeforeTheNext(const GroupView&, Findings&);
void keysDoNotCollideWithIdentifiers(const GroupView&, Findings&);

}  // namespace rules
}  // namespace multiscene
