#include "core/ExpectedPictures.h"

#include <algorithm>
#include <vector>

#include "core/QVObject3DTextureBase.h"
#include "core/QVScene3D.h"

namespace multiscene {

namespace {

void collect(const QVObjectContainer3D::Children& nodes, std::vector<QVObject3DTextureBase*>& drawables) {
    for (const auto& node : nodes) {
        if (auto* drawable = dynamic_cast<QVObject3DTextureBase*>(node.get())) drawables.push_back(drawable);
        collect(node->children(), drawables);
    }
}

}  // namespace

void expectPictures(const QVScene3D& scene) {
    std::vector<QVObject3DTextureBase*> drawables;
    collect(scene.children(), drawables);
    std::ranges::stable_sort(drawables, {}, &QVObject3DTextureBase::sartFps);
    for (QVObject3DTextureBase* drawable : drawables)
        if (drawable->sartFps() <= scene.lastFrame()) drawable->expectPicture();
}

}  // namespace multiscene
