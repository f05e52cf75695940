#include "renderLoop/SceneSlots.h"

#include "platform/base/Error.h"
#include "playback/VideoTimeSource.h"

namespace multiscene {

void SceneSlots::clear() {
    for (const auto* slot : all())
        if (*slot && (*slot)->timeSource()) (*slot)->timeSource()->cancelDecode();
    for (auto* slot : all()) {
        if (!*slot) continue;
        (*slot)->dispose();
        (*slot)->removeAllChild();
        slot->reset();
    }
    mode = SceneRenderType::Single;
}

void SceneSlots::requireRunningClock() const {
    if (current && current->timeSource() && current->timeSource()->isAlive()) return;
    throw platform::Error(platform::ErrorKind::Failed,
                          "the scene has no running clock, so it would never end",
                          current ? current->sceneConfigData().scenePlistPath : std::string(), "TimeSource");
}

}  // namespace multiscene
