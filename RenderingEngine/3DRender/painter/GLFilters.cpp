#include "painter/GLFilters.h"

#include <epoxy/gl.h>

#include <array>

#include "opengl2.0/ShaderSource.h"
#include "platform/base/Paths.h"
#include "platform/image/ColorTable.h"
#include "platform/pixels/BellBlur.h"
#include "platform/pixels/GrainNoise.h"

namespace multiscene {

namespace {

glm::vec2 vectorOf(const FilteredSize& size) { return {size.width, size.height}; }

void bind(Shader& shader, const char* sampler, int unit, Texture& texture) {
    const unsigned int name = texture.glName();
    glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, name);
    for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
        glTexParameteri(GL_TEXTURE_2D, axis, GL_CLAMP_TO_EDGE);
    glActiveTexture(GL_TEXTURE0);
    shader.setUniform(sampler, unit);
}

void drawOverAll(Shader& shader) {
    constexpr std::array<float, 8> corners{-1, -1, 1, -1, 1, 1, -1, 1};
    const unsigned int position = shader.attributeHandle("position");
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glVertexAttribPointer(position, 2, GL_FLOAT, GL_FALSE, 0, corners.data());
    glEnableVertexAttribArray(position);
    glDrawArrays(GL_TRIANGLE_FAN, 0, 4);
    glDisableVertexAttribArray(position);
}

}  // namespace

Texture& GLFilters::filtered(Texture& texture, const FilterChain& chain, bool isUpsideDown) {
    constexpr size_t mostKept = 24;
    if (targets_.size() > mostKept) targets_.clear();
    isUpsideDown_ = isUpsideDown;
    for (const GLenum test : {GL_BLEND, GL_DEPTH_TEST, GL_SCISSOR_TEST, GL_CULL_FACE}) glDisable(test);
    const FilteredSize size = filteredSize(texture.width(), texture.height(), chain.pictureSize);
    Source shown = loaded(texture, size);
    for (const Filter& filter : chain.filters) shown = apply(shown, filter);
    return *shown.texture;
}

void GLFilters::release() {
    targets_.clear();
    tables_.clear();
    noise_.clear();
}

// --- programs ------------------------------------------------------------------------------------------

std::string GLFilters::text(const std::string& file) {
    std::string problem;
    const auto path = platform::resourcesFolder() / "shaders" / "filters" / file;
    return readShaderText(path.string(), gate_, problem).value_or(std::string());
}

std::shared_ptr<Shader> GLFilters::shaderFor(const Filter& filter) {
    const std::string key = "filters/" + std::string(filter.type->name);
    if (auto known = shaders_.shaderForName(key)) return known;
    std::vector<std::string> uniforms{"picture",    "pictureSize",  "isUpsideDown",
                                      "strength",   "asidePicture", "asideSize",
                                      "asideScale", "asideShift",   "isAsideUpsideDown"};
    for (const KeyType type : {KeyType::Number, KeyType::Color})
        for (const Key* each : keysOf(*filter.type, type)) uniforms.emplace_back(each->name);
    const std::string kind = filter.type->movesPlaces ? "#define MOVES_PLACES\n" : "";
    return shaders_.createShaderWithVertex(
        text("filter.vsh"), kind + text("filter.glsl") + text(std::string(filter.type->name) + ".fsh"),
        {"position"}, uniforms, key);
}

std::shared_ptr<Shader> GLFilters::step(const std::string& name, const std::vector<std::string>& uniforms) {
    const std::string key = "filters/" + name;
    if (auto known = shaders_.shaderForName(key)) return known;
    return shaders_.createShaderWithVertex(text("filter.vsh"), text(name + ".fsh"), {"position"}, uniforms,
                                           key);
}

// --- drawing -------------------------------------------------------------------------------------------

QVFrameBufferToTexture& GLFilters::nextTarget(Use use, const FilteredSize& size) {
    turns_[use] ^= 1;
    auto& target = targets_[{use, turns_[use], size.width, size.height}];
    if (!target) target = std::make_unique<QVFrameBufferToTexture>(size.width, size.height);
    return *target;
}

/// The program is current and has its uniforms, but for the picture.
GLFilters::Source GLFilters::drawn(Use use, const FilteredSize& size, Shader& shader, const Source& from) {
    QVFrameBufferToTexture& target = nextTarget(use, size);
    glBindFramebuffer(GL_FRAMEBUFFER, target.frameBuffer());
    glViewport(0, 0, size.width, size.height);
    bind(shader, "picture", 0, *from.texture);
    drawOverAll(shader);
    return {target.texture().get(), size};
}

/// In the size that it is filtered in, colours multiplied by alpha.
GLFilters::Source GLFilters::loaded(Texture& texture, const FilteredSize& size) {
    const bool isReady = texture.isPremultiplied() || texture.isOpaque();
    if (isReady && FilteredSize{texture.width(), texture.height()} == size) return {&texture, size};
    const auto shader = step("load", {"picture", "pictureSize", "isPreMultiplication"});
    shaders_.useShaderObject(shader.get());
    shader->setUniform("pictureSize", vectorOf(size));
    shader->setUniform("isPreMultiplication", isReady ? 1 : 0);
    return drawn(Use::Picture, size, *shader, {&texture, {}});
}

GLFilters::Source GLFilters::blurred(const Source& picture, const Filter& filter, float& scale) {
    const platform::BellSteps steps = platform::bellSteps(blurOf(filter, picture.size));
    Source shown = picture;
    const auto halve = step("halve", {"picture", "pictureSize", "isUpsideDown"});
    for (int i = 0; i < steps.halvings; ++i) {
        shaders_.useShaderObject(halve.get());
        halve->setUniform("pictureSize", vectorOf(shown.size));
        halve->setUniform("isUpsideDown", isUpsideDown_ ? 1 : 0);
        const FilteredSize half{platform::halved(shown.size.width), platform::halved(shown.size.height)};
        shown = drawn(Use::Blur, half, *halve, shown);
    }
    const auto bell = step("bell", {"picture", "pictureSize", "direction"});
    for (const glm::vec2 direction : {glm::vec2(1, 0), glm::vec2(0, 1)}) {
        shaders_.useShaderObject(bell.get());
        bell->setUniform("pictureSize", vectorOf(shown.size));
        bell->setUniform("direction", direction);
        constexpr size_t taps = 10;
        for (size_t tap = 0; tap < taps; ++tap)
            bell->setUniformStructOrArray(
                "weights[" + std::to_string(tap) + "]",
                tap < steps.weights.size() ? static_cast<float>(steps.weights[tap]) / 65536 : 0.0f);
        shown = drawn(Use::Blur, shown.size, *bell, shown);
    }
    scale = 1.0f / static_cast<float>(1 << steps.halvings);
    return shown;
}

/// The filter's program is current afterwards.
void GLFilters::lookAside(Shader& shader, const Source& picture, const Filter& filter) {
    Source aside{nullptr, {}};
    float scale = 1;
    glm::vec2 shift{0};
    switch (filter.type->aside) {
        case FilterAside::None:
            break;
        case FilterAside::Blurred:
            aside = blurred(picture, filter, scale);
            break;
        case FilterAside::Noise: {
            const platform::Surface noise = platform::grainNoise();
            if (noise_.isEmpty()) noise_.setPainted(noise, nullptr);
            aside = {&noise_, {noise.width, noise.height}};
            scale = grainScale(filter, picture.size);
            const auto [x, y] = platform::grainShift(filter.frame);
            shift = {x, y};
            break;
        }
        case FilterAside::Table: {
            const platform::Surface table = filter.table->picture();
            Texture& shown = tables_[filter.table];
            if (shown.isEmpty()) shown.setPainted(table, nullptr);
            aside = {&shown, {table.width, table.height}};
            break;
        }
    }
    shaders_.useShaderObject(&shader);
    if (!aside.texture) return;
    bind(shader, "asidePicture", 1, *aside.texture);
    shader.setUniform("asideSize", vectorOf(aside.size));
    shader.setUniform("asideScale", scale);
    shader.setUniform("asideShift", shift);
    shader.setUniform("isAsideUpsideDown",
                      isUpsideDown_ && filter.type->aside == FilterAside::Blurred ? 1 : 0);
}

GLFilters::Source GLFilters::apply(const Source& picture, const Filter& filter) {
    const auto shader = shaderFor(filter);
    if (shader->programHandle() == 0) return picture;
    lookAside(*shader, picture, filter);
    shader->setUniform("pictureSize", vectorOf(picture.size));
    shader->setUniform("isUpsideDown", isUpsideDown_ ? 1 : 0);
    shader->setUniform("strength", filter.strength);
    const std::vector<const Key*> numbers = keysOf(*filter.type, KeyType::Number),
                                  colors = keysOf(*filter.type, KeyType::Color);
    for (size_t i = 0; i < numbers.size(); ++i) shader->setUniform(numbers[i]->name, filter.numbers[i]);
    for (size_t i = 0; i < colors.size(); ++i) shader->setUniform(colors[i]->name, filter.colors[i]);
    return drawn(Use::Picture, picture.size, *shader, picture);
}

}  // namespace multiscene
