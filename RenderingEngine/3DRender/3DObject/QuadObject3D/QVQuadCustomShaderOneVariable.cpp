#include "3DObject/QuadObject3D/QVQuadCustomShaderOneVariable.h"

#include "core/QVLightBase.h"
#include "format/NodeTypes.h"
#include "opengl2.0/Shader.h"
#include "painter/Painter.h"

namespace multiscene {

static constexpr Key oneVariableAnimationKeyList[] = {
    {.name = "startOneVariable", .type = KeyType::Number, .fallback = "0", .meaning = "value at the start"},
    {.name = "endOneVariable", .type = KeyType::Number, .fallback = "0", .meaning = "value at the end"},
};
constexpr KeyTable oneVariableAnimationKeys{"AnimationInfo of a custom shader",
                                            "A change of the one variable.", &animationKeys,
                                            oneVariableAnimationKeyList};

static constexpr Key customShaderInfoKeyList[] = {
    {.name = "startOneVariable",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "value before the first key"},
};
constexpr KeyTable customShaderInfoKeys{"CustomShaderInfo", "The variable of a custom shader.", nullptr,
                                        customShaderInfoKeyList};

static constexpr Key customShaderKeyList[] = {
    {.name = "CustomShaderInfo",
     .type = KeyType::Dictionary,
     .meaning = "the variable's first value; the shader is FpsInfo's \"customShaderPath\"",
     .children = &customShaderInfoKeys},
    {.name = "AnimationInfo",
     .type = KeyType::Array,
     .meaning = "changes of the variable",
     .children = &oneVariableAnimationKeys},
};
constexpr KeyTable customShaderKeys{"QVQuadCustomShaderOneVariable",
                                    "A quad with a shader of the template and one animated variable.",
                                    &quadKeys, customShaderKeyList};

QV_REGISTER_NODE_TYPE(QVQuadCustomShaderOneVariable, customShaderKeys);

void QVQuadCustomShaderOneVariable::rendInfoWithDic(const platform::Value& info) {
    QVQuadObject3D::rendInfoWithDic(info);
    const KeyReader reader(customShaderInfoKeys, KeyReader(customShaderKeys, info).value("CustomShaderInfo"));
    oneVariable_.setValue(reader.number("startOneVariable"));
}

void QVQuadCustomShaderOneVariable::draw(Painter& painter) {
    if (!customShader()) return;
    ShaderLook look{.shader = customShader(), .uniforms = {{"aplae", oneVariable()}}};
    if (customShader()->hasUniform("lightEnable"))
        QVLightBase::glslLightParamWithLightArray(ligthArray(), look.uniforms, isLightEnable());
    drawWith(painter, std::move(look));
}

void QVQuadCustomShaderOneVariable::animationWithInfo(const platform::Value::Array& keys) {
    oneVariable_.read(keys, oneVariableAnimationKeys, "startOneVariable", "endOneVariable");
}

void QVQuadCustomShaderOneVariable::addTraceValues(platform::Value::Dictionary& values) const {
    values["oneVariable"] = platform::Value(static_cast<double>(oneVariable()));
}

}  // namespace multiscene
