#pragma once

#include <cstdint>
#include <vector>

#include "app/Model/QVTempletDataModel.h"
#include "group/SceneCatalogue.h"

namespace multiscene {

/// Frames of the video that a template makes: of its scene group where it has one, else of its first scene.
/// Below 1 when the template does not say. Scenes that it does not bring are looked up in `others`; null:
/// nowhere.
int64_t lengthInFrames(const std::vector<QVTempletDataModel>& records, SceneCatalogue* others);

/// Photos that a template asks for.
int64_t photosWanted(const QVTempletDataModel& record);
int64_t photosWanted(const UserInputList& inputs);

}  // namespace multiscene
