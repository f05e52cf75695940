#include "core/SceneNodes.h"

#include "core/QVScene3D.h"
#include "format/NodeTypes.h"
#include "platform/base/Error.h"

namespace multiscene {

std::shared_ptr<QVObject3DFpsBase> SceneNodes::object3DWithInfo(const platform::Value& info,
                                                                const std::shared_ptr<QVScene3D>& scene,
                                                                const std::string& keyPath) {
    const std::string type = info.string("type");
    const auto* known = NodeTypes::find(type);
    if (!known)
        throw platform::Error(platform::ErrorKind::Template, "unknown node type \"" + type + "\"",
                              scene ? scene->sceneConfigData().scenePlistPath : std::string(), "object3D");
    auto node = known->make();
    node->setScene(scene);
    node->setKeyPath(keyPath);
    node->rendInfoWithDic(info);
    return node;
}

}  // namespace multiscene
