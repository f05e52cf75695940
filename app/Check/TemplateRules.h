// What a template and a group of scenes can get wrong as a whole. One idea a function.
#pragma once

#include <span>

#include "app/Check/Finding.h"
#include "app/Check/TemplateView.h"

namespace multiscene {

using TemplateRule = void (*)(const TemplateView&, Findings&);
using GroupRule = void (*)(const GroupView&, Findings&);

std::span<const TemplateRule> templateRules();
std::span<const GroupRule> groupRules();

namespace rules {

// TemplateRules.cpp
void lengthsAreTheClocks(const TemplateView&, Findings&);
void numbersAreUnique(const TemplateView&, Findings&);
void pictureSizeIsEven(const TemplateView&, Findings&);
void musicIsThere(const TemplateView&, Findings&);
void inputKeysAreUnique(const TemplateView&, Findings&);
void inputKeysAreFree(const TemplateView&, Findings&);
void inputsAreUsed(const TemplateView&, Findings&);

// GroupRules.cpp
void groupHasScenes(const GroupView&, Findings&);
void scenesAreInTheCatalogue(const GroupView&, Findings&);
void transitionsFitTheirScenes(const GroupView&, Findings&);
void overlaysEndBeforeTheNext(const GroupView&, Findings&);
void keysDoNotCollideWithIdentifiers(const GroupView&, Findings&);

}  // namespace rules
}  // namespace multiscene
