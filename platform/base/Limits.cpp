#include "platform/base/Limits.h"

namespace platform {

std::vector<LimitRow> limitRows() {
    return {
        {"maxRecords", Limits::maxRecords, "catalogue records of a template"},
        {"maxGroupScenes", Limits::maxGroupScenes, "scenes in a group"},
        {"maxSceneNodes", Limits::maxSceneNodes, "nodes in a scene, cameras and clock included"},
        {"maxSceneFiles", Limits::maxSceneFiles, "times that a scene names a file"},
        {"maxShaderBytes", Limits::maxShaderBytes, "bytes of a shader's description, and of each source"},
        {"maxPictureBytes", Limits::maxPictureBytes, "bytes of a picture's file, a user's photo included"},
    };
}

std::string beyondLimit(uint64_t count, const std::string& things, uint64_t limit) {
    return "holds " + std::to_string(count) + " " + things + ", more than the " + std::to_string(limit) +
           " that are allowed";
}

}  // namespace platform
