#include "opengl2.0/QVObject3DShaderCreater.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numbers>
#include <vector>

namespace multiscene {

namespace {

/// Pairs of taps that get a coordinate of their own from the vertex shader: 15 varyings with the centre.
constexpr unsigned int maxVaryingPairs = 7;

struct TapPair {
    float weight, offset;
};

struct Kernel {
    float centre;
    std::vector<TapPair> pairs;

    unsigned int varyingPairs() const {
        return std::min(static_cast<unsigned int>(pairs.size()), maxVaryingPairs);
    }
    unsigned int varyings() const { return 1 + 2 * varyingPairs(); }
};

/// One weight beyond the radius is kept at 0 for the last pair of an odd radius.
std::vector<float> weights(unsigned int radius, double sigma) {
    std::vector<float> weight(radius + 2, 0.0f);
    float sum = 0;
    for (unsigned int i = 0; i <= radius; ++i) {
        weight[i] = static_cast<float>(1 / std::sqrt(2 * std::numbers::pi * sigma * sigma) *
                                       std::exp(-(double(i) * i) / (2 * sigma * sigma)));
        sum += i == 0 ? weight[i] : 2 * weight[i];
    }
    for (float& value : weight) value /= sum;
    return weight;
}

Kernel kernel(unsigned int radius, double sigma) {
    const std::vector<float> w = weights(radius, sigma);
    Kernel result{w[0], {}};
    for (unsigned int i = 1; i <= radius; i += 2) {
        const float weight = w[i] + w[i + 1];
        const float offset = (float(i) * w[i] + float(i + 1) * w[i + 1]) / weight;
        result.pairs.push_back({weight, offset});
    }
    return result;
}

/// Six decimals, whatever the locale.
std::string decimal(float value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, double(value), std::chars_format::fixed, 6).ptr;
    return std::string(text, end);
}

std::string coordinate(unsigned int index) { return "blurCoordinates[" + std::to_string(index) + "]"; }

std::string step(unsigned int index, const char* sign, float offset) {
    return "         " + coordinate(index) + " = textureCoordinate.xy " + sign + " singleStepOffset * " +
           decimal(offset) + ";\n";
}

std::string tap(const std::string& where, float weight) {
    return "sum += texture2D(videoFrame, " + where + ") * " + decimal(weight) + ";\n";
}

std::string vertexHead(unsigned int varyings) {
    return "     attribute vec4 position;\n     attribute vec4 inputTextureCoordinate;\n     \n"
           "     uniform mat4 u_mvpMatrix;\n     uniform mat4 u_textureMatrix;\n     \n"
           "     uniform float texelWidthOffset;\n     uniform float texelHeightOffset;\n     \n"
           "     varying vec2 " +
           coordinate(varyings) +
           ";\n     \n"
           "     void main()\n     {\n     gl_Position = u_mvpMatrix * position;\n"
           "     vec4 textureCoordinate = u_textureMatrix * inputTextureCoordinate;\n     \n"
           "     vec2 singleStepOffset = vec2(texelWidthOffset, texelHeightOffset);\n";
}

std::string fragmentHead(unsigned int varyings) {
    return "     uniform sampler2D videoFrame;\n     uniform highp float texelWidthOffset;\n"
           "     uniform highp float texelHeightOffset;\n     \n"
           "     varying highp vec2 " +
           coordinate(varyings) +
           ";\n     \n"
           "     void main()\n     {\n     lowp vec4 sum = vec4(0.0);\n";
}

/// The taps beyond the varyings, which the fragment shader places itself.
std::string farTaps(const Kernel& kernel) {
    if (kernel.pairs.size() <= maxVaryingPairs) return {};
    std::string text = "highp vec2 singleStepOffset = vec2(texelWidthOffset, texelHeightOffset);\n";
    for (size_t k = maxVaryingPairs; k < kernel.pairs.size(); ++k) {
        const auto [weight, offset] = kernel.pairs[k];
        for (const char* sign : {" + ", " - "})
            text += tap(coordinate(0) + sign + "singleStepOffset * " + decimal(offset), weight);
    }
    return text;
}

}  // namespace

std::optional<std::string> QVObject3DShaderCreater::vertexShaderForOptimizedBlurOfRadius(unsigned int radius,
                                                                                         double sigma) {
    if (radius == 0) return std::nullopt;
    const Kernel blur = kernel(radius, sigma);
    std::string text = vertexHead(blur.varyings()) + coordinate(0) + " = textureCoordinate.xy;\n";
    for (unsigned int k = 0; k < blur.varyingPairs(); ++k)
        text += step(2 * k + 1, "+", blur.pairs[k].offset) + step(2 * k + 2, "-", blur.pairs[k].offset);
    return text + "}\n";
}

std::optional<std::string> QVObject3DShaderCreater::fragmentShaderForOptimizedBlurOfRadius(
    unsigned int radius, double sigma) {
    if (radius == 0) return std::nullopt;
    const Kernel blur = kernel(radius, sigma);
    std::string text = fragmentHead(blur.varyings()) + tap(coordinate(0), blur.centre);
    for (unsigned int k = 0; k < blur.varyingPairs(); ++k)
        text += tap(coordinate(2 * k + 1), blur.pairs[k].weight) +
                tap(coordinate(2 * k + 2), blur.pairs[k].weight);
    return text + farTaps(blur) + "     gl_FragColor = sum;\n     }\n";
}

}  // namespace multiscene
