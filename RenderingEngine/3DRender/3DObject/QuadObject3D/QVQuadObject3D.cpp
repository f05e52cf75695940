#include "3DObject/QuadObject3D/QVQuadObject3D.h"

#include "core/Material/QVTextureMaterial.h"
#include "core/Material/ZBTexture.h"
#include "core/ShownSize.h"
#include "format/NodeTypes.h"
#include "painter/Painter.h"

namespace multiscene {

static constexpr Key quadInfoKeyList[] = {
    {.name = "modelWidth",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "width of the box",
     .required = true},
    {.name = "modelHeight",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "height of the box",
     .required = true},
    {.name = "anchorX",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "centre of the quad, x"},
    {.name = "anchorY",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "centre of the quad, y"},
    {.name = "anchorZ",
     .type = KeyType::Number,
     .unit = "model units",
     .fallback = "0",
     .meaning = "centre of the quad, z"},
    {.name = "quadObject3DContentMode",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning =
         "0 stretched to the box, 1 fitted inside it, 2 filling it; 1 and 2 keep the picture's proportions",
     .minimum = 0,
     .maximum = 2},
    {.name = "backgroundRenderMode",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "1: a blurred copy of the picture fills the box behind a fitted quad",
     .minimum = 0,
     .maximum = 1},
};
constexpr KeyTable quadInfoKeys{"QuadInfo", "The box of a quad.", nullptr, quadInfoKeyList};

static constexpr Key quadKeyList[] = {
    {.name = "QuadInfo",
     .type = KeyType::Dictionary,
     .meaning = "size and place of the quad",
     .required = true,
     .children = &quadInfoKeys},
};
const KeyTable quadKeys{"QVQuadObject3D", "A textured rectangle.", &textureBaseKeys, quadKeyList};

QV_REGISTER_NODE_TYPE(QVQuadObject3D, quadKeys);

void QVQuadObject3D::rendInfoWithDic(const platform::Value& info) {
    QVObject3DTextureBase::rendInfoWithDic(info);
    modelBaseInfo(KeyReader(quadKeys, info).value("QuadInfo"));
}

void QVQuadObject3D::modelBaseInfo(const platform::Value& info) {
    const KeyReader reader(quadInfoKeys, info);
    modelWidth_ = reader.number("modelWidth");
    modelHeight_ = reader.number("modelHeight");
    anchor_ = {reader.number("anchorX"), reader.number("anchorY"), reader.number("anchorZ")};
    contentMode_ = reader.int32("quadObject3DContentMode");
    backgroundRenderMode_ = reader.int32("backgroundRenderMode");
    initVerticesAndBgShader();
}

void QVQuadObject3D::initVerticesAndBgShader() {
    squareVertices_ = squareBgVertices_ = cornersOfSize(modelWidth_, modelHeight_);
}

QVQuadObject3D::Corners QVQuadObject3D::cornersOfSize(float width, float height) const {
    const float left = anchor_.x - width / 2, right = anchor_.x + width / 2;
    const float bottom = anchor_.y - height / 2, top = anchor_.y + height / 2;
    const float z = anchor_.z;
    return {left, bottom, z, right, bottom, z, right, top, z, left, top, z};
}

void QVQuadObject3D::computeVertices() {
    const TextureSize size = textureMaterial() ? textureMaterial()->textureSize() : TextureSize{};
    if (size.width <= 0 || size.height <= 0) return;
    const float boxRatio = modelWidth_ / modelHeight_;
    const float pictureRatio = static_cast<float>(size.width) / static_cast<float>(size.height);
    const auto mode = static_cast<QuadContentMode>(contentMode_);
    float width = modelWidth_, height = modelHeight_;
    if (mode == QuadContentMode::Fit || mode == QuadContentMode::Fill) {
        const bool isWider = pictureRatio >= boxRatio;
        if (isWider == (mode == QuadContentMode::Fit))
            height = modelWidth_ / pictureRatio;
        else
            width = modelHeight_ * pictureRatio;
    }
    squareVertices_ = cornersOfSize(width, height);
}

ShownBox QVQuadObject3D::largestShownBox() {
    if (!liesInItsBox()) return {};
    const double pixels = mostPixelsAUnit(*this).value_or(0);
    return {.width = std::abs(modelWidth_) * pixels,
            .height = std::abs(modelHeight_) * pixels,
            .isCovered = contentMode_ == static_cast<int32_t>(QuadContentMode::Fill)};
}

void QVQuadObject3D::renderingBeforeConfig(Painter& painter, const Tick& tick) {
    QVObject3DTextureBase::renderingBeforeConfig(painter, tick);
    if (contentMode_ == static_cast<int32_t>(QuadContentMode::Fit) && backgroundRenderMode_ == 1)
        renderBgVideo(painter, tick);
}

void QVQuadObject3D::renderBgVideo(Painter& painter, const Tick& tick) {
    if (!isDueAt(tick.frame) || !textureMaterial()) return;
    const TextureSize size = textureMaterial()->textureSize();
    if (size.width > 0 && size.height > 0)
        drawCorners(painter, squareBgVertices_, BlurLook{.pictureSize = {size.width, size.height}});
}

void QVQuadObject3D::drawWith(Painter& painter, Look look) {
    drawCorners(painter, squareVertices_, std::move(look), filters());
}

void QVQuadObject3D::drawCorners(Painter& painter, const Corners& corners, Look look,
                                 std::shared_ptr<const FilterChain> filters) {
    painter.draw(QuadDraw{.corners = corners,
                          .textureCoordinates = masterTextureCoordinates(),
                          .mvpMatrix = projTransform(),
                          .textureMatrix = textureMatrix(),
                          .texture = drawnTexture(),
                          .mayRepeat = mayRepeat(),
                          .filters = std::move(filters),
                          .look = std::move(look),
                          .state = {}});
}

bool QVQuadObject3D::mayRepeat() const { return textureMaterial() && textureMaterial()->mayRepeat(); }

void QVQuadObject3D::addTraceFields(platform::Value::Dictionary& fields) {
    QVObject3DTextureBase::addTraceFields(fields);
    platform::Value::Array vertices(squareVertices_.begin(), squareVertices_.end());
    fields["vertices"] = platform::Value(std::move(vertices));
    platform::Value::Dictionary values;
    addTraceValues(values);
    if (!values.empty()) fields["values"] = platform::Value(std::move(values));
}

}  // namespace multiscene
