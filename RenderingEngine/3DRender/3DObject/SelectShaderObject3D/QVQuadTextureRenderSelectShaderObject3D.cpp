#include "3DObject/SelectShaderObject3D/QVQuadTextureRenderSelectShaderObject3D.h"

#include "3DObject/SelectShaderObject3D/QVQuadAlphaGradualNoLight.h"
#include "format/NodeTypes.h"

namespace multiscene {

namespace {

template <typename Render>
std::unique_ptr<QVQuadTextureShaderRenderBase> make(QVQuadObject3D& quad) {
    return std::make_unique<Render>(quad);
}

struct RenderType {
    std::string_view name;
    const KeyTable* keys;
    std::unique_ptr<QVQuadTextureShaderRenderBase> (*make)(QVQuadObject3D&);
};
constexpr RenderType renderTypes[] = {
    {"QVAlphaGradualNoLight", &alphaGradualKeys, make<QVQuadAlphaGradualNoLight>}};
constexpr KeyVariants renderVariants = variantsOfList<renderTypes>("render", "renderType");

}  // namespace

static constexpr Key renderInfoKeyList[] = {
    {.name = "renderType", .type = KeyType::Choice, .meaning = "how the quad is drawn", .required = true},
};
constexpr KeyTable renderInfoKeys{"RenderInfo", "How a quad is drawn.", nullptr, renderInfoKeyList,
                                  &renderVariants};

static constexpr Key selectShaderKeyList[] = {
    {.name = "RenderInfo",
     .type = KeyType::Dictionary,
     .meaning = "the way of drawing",
     .required = true,
     .children = &renderInfoKeys},
};
constexpr KeyTable selectShaderKeys{"QVQuadTextureRenderSelectShaderObject3D",
                                    "A quad whose way of drawing is chosen by name.", &quadKeys,
                                    selectShaderKeyList};

QV_REGISTER_NODE_TYPE(QVQuadTextureRenderSelectShaderObject3D, selectShaderKeys);

void QVQuadTextureRenderSelectShaderObject3D::rendInfoWithDic(const platform::Value& info) {
    QVQuadObject3D::rendInfoWithDic(info);
    const platform::Value renderInfo = KeyReader(selectShaderKeys, info).value("RenderInfo");
    const std::string renderType = KeyReader(renderInfoKeys, renderInfo).text("renderType");
    for (const RenderType& known : renderTypes)
        if (known.name == renderType) shaderRender_ = known.make(*this);
    if (shaderRender_) shaderRender_->renderInfoWithDic(renderInfo);
}

void QVQuadTextureRenderSelectShaderObject3D::updateDue(const Tick& tick) {
    QVQuadObject3D::updateDue(tick);
    if (shaderRender_) shaderRender_->updateData(tick.frame);
}

void QVQuadTextureRenderSelectShaderObject3D::draw(Painter& painter) {
    if (shaderRender_) shaderRender_->render(painter);
}

void QVQuadTextureRenderSelectShaderObject3D::addTraceValues(platform::Value::Dictionary& values) const {
    if (shaderRender_) shaderRender_->addTraceValues(values);
}

}  // namespace multiscene
