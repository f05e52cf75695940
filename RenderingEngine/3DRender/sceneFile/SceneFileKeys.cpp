#include "sceneFile/SceneFileKeys.h"

#include "core/QVLightBase.h"
#include "core/carmera/QVCamera3D.h"
#include "format/NodeTypes.h"
#include "playback/VideoTimeSource.h"

namespace multiscene {

static constexpr Key sceneFileKeyList[] = {
    {.name = "Camera",
     .type = KeyType::Dictionary,
     .meaning = "the scene's camera; none: perspective, 75 degrees",
     .children = &cameraKeys},
    {.name = "LightSourceArray",
     .type = KeyType::Array,
     .meaning = "the scene's lights",
     .children = &lightKeys},
    {.name = "TimeSource",
     .type = KeyType::Dictionary,
     .meaning = "the scene's clock, by its \"type\": a background video or a bare frame clock",
     .required = true,
     .children = &timeSourceKeys},
    {.name = "object3D",
     .type = KeyType::Array,
     .meaning = "the top-level nodes, each by its \"type\"",
     .children = &nodeKeys},
};
const KeyTable sceneFileKeys{"Scene file", "One scene: camera, lights, clock and nodes, read in this order.",
                             nullptr, sceneFileKeyList};

static constexpr Key sceneTansitionsInfoKeyList[] = {
    {.name = "tansitionsSceneId",
     .type = KeyType::Integer,
     .meaning = "catalogue number of the scene that composes the transition; below 1: no transition",
     .required = true},
    {.name = "fpsTotal",
     .type = KeyType::Integer,
     .unit = "frames",
     .meaning = "length of the transition: it starts when this many frames are left",
     .required = true,
     .minimum = 0},
    {.name = "sceneTansitionsType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "0: both scenes as textures in the transition scene; 1: transition scene over the scene; "
                "2: none",
     .minimum = 0,
     .maximum = 2},
};
const KeyTable sceneTansitionsInfoKeys{"sceneTansitionsInfo", "The transition at the end of a scene.",
                                       nullptr, sceneTansitionsInfoKeyList};

static constexpr Key sceneEntryKeyList[] = {
    {.name = "mainSceneId",
     .type = KeyType::Integer,
     .meaning = "catalogue number of the scene",
     .required = true},
    {.name = "sceneIdentifier",
     .type = KeyType::Text,
     .meaning = "this use of the scene; its values are looked up under key + identifier"},
    {.name = "sceneTansitionsInfo",
     .type = KeyType::Dictionary,
     .meaning = "the transition to the next scene; none: a hard cut",
     .children = &sceneTansitionsInfoKeys},
};
const KeyTable sceneEntryKeys{
    "Scene entry",
    "One scene of a group. Its identifier is written twice, also as a key of that name: "
    "programs that edit groups find the entry by it.",
    nullptr, sceneEntryKeyList};

static constexpr Key sceneGroupFileKeyList[] = {
    {.name = "scene",
     .type = KeyType::Array,
     .meaning = "the scenes in playing order",
     .required = true,
     .children = &sceneEntryKeys},
    {.name = "userMediaMap",
     .type = KeyType::Dictionary,
     .meaning = "the user's texts, paths and numbers by key, or by key followed directly by identifier"},
    {.name = "sceneGroupFpsTotal",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "length of the whole group",
     .minimum = 0},
};
const KeyTable sceneGroupFileKeys{"Scene-group file", "What is played: scenes, transitions, user's media.",
                                  nullptr, sceneGroupFileKeyList};

}  // namespace multiscene
