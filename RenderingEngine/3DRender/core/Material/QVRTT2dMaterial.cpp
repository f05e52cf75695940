#include "core/Material/QVRTT2dMaterial.h"

#include "core/Material/SceneTextures.h"
#include "core/Material/TextureInfoKeys.h"
#include "core/QVScene3D.h"
#include "core/QVSceneRenderToTexture.h"

namespace multiscene {

constexpr KeyTable sceneTextureKeys{"Scene textures",
                                    "What a scene has drawn, in the scene of a transition of type 0."};

static constexpr Key namedTargetKeyList[] = {
    {.name = "textureMapKey",
     .type = KeyType::Text,
     .meaning = "the \"textureMapKey\" of the node that draws into a texture",
     .required = true},
};
const KeyTable namedTargetKeys{"RTTTexture", "What a node has drawn into a texture.", nullptr,
                               namedTargetKeyList};

namespace {

using Scene = std::shared_ptr<QVScene3D>;

/// The picture of a scene that the render driver names; none when it has no such scene.
template <Scene (RenderDriver::*sceneOfDriver)() const>
std::shared_ptr<QVMaterialBase> sceneMaterial(const platform::Value&, const MaterialContext& context) {
    const Scene shown = context.scene ? (context.scene->renderManager().*sceneOfDriver)() : nullptr;
    return std::make_shared<QVRTT2dMaterial>(shown ? shown->renderToTextureObject().texture() : nullptr);
}

std::shared_ptr<QVMaterialBase> namedTargetMaterial(const platform::Value& textureInfo,
                                                    const MaterialContext& context) {
    const std::string key = KeyReader(namedTargetKeys, textureInfo).text("textureMapKey");
    return std::make_shared<QVRTT2dMaterial>(context.scene ? context.scene->renderToTextureMap(key)
                                                           : nullptr);
}

}  // namespace

static const MaterialTypes::Registration registeredCurrentScene(kCurrentSceneTexture,
                                                                sceneMaterial<&RenderDriver::currentScene>,
                                                                sceneTextureKeys);
static const MaterialTypes::Registration registeredNextScene(kNextSceneTexture,
                                                             sceneMaterial<&RenderDriver::nextScene>,
                                                             sceneTextureKeys);
static const MaterialTypes::Registration registeredNamedTarget("RTTTexture", namedTargetMaterial,
                                                               namedTargetKeys);

QVRTT2dMaterial::QVRTT2dMaterial(std::shared_ptr<Texture> texture)
    : QVTextureMaterial(MaterialType::RenderTarget, bottomUpTextureCoordinates) {
    setTexture(std::move(texture));
}

}  // namespace multiscene
