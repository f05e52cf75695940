#include "painter/GLPainter.h"

#include <epoxy/gl.h>

#include <algorithm>

#include "core/GLESUtils/ReadBack.h"
#include "opengl2.0/QVObject3DShaderCreater.h"
#include "painter/LightUniforms.h"
#include "painter/PlaceOnQuad.h"

namespace multiscene {

namespace {

constexpr int samplesAPixel = 2;
constexpr const char* blurShaderName = "gaussianBlur_renderShader";

/// What else a shader must do to the straight colours that it gives, the uniform "sentColors". x is 1: it
/// multiplies them by alpha and opacity, for source factor ONE. y is 1: by the opacity alone, so that it
/// fades what a draw adds under factors that alpha is no part of.
glm::vec2 sentColors(const BlendFunction& blend) {
    switch (blend.source) {
        case GL_ONE:
            return {1, 0};
        case GL_ZERO:
        case GL_SRC_ALPHA:
        case GL_SRC_ALPHA_SATURATE:
            return {0, 0};
    }
    return {0, 1};
}

struct VertexArray {
    unsigned int attribute;
    int components;
    const float* values;
};

/// Draws arrays in the caller's memory, or in a buffer at these places from its start, `stride` bytes from
/// one corner to the next; 0: packed.
void drawArrays(GLenum mode, int count, int stride, std::initializer_list<VertexArray> arrays,
                unsigned int buffer = 0) {
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    for (const auto& [attribute, components, values] : arrays) {
        if (attribute == 0) continue;
        glVertexAttribPointer(attribute, components, GL_FLOAT, GL_FALSE, stride, values);
        glEnableVertexAttribArray(attribute);
    }
    glDrawArrays(mode, 0, count);
    // A later draw with other attributes must not look at them.
    for (const VertexArray& array : arrays)
        if (array.attribute != 0) glDisableVertexAttribArray(array.attribute);
    if (buffer != 0) glBindBuffer(GL_ARRAY_BUFFER, 0);
}

/// `buffer`: where GL has the corners already.
void drawTriangles(const Shader& shader, std::span<const MeshVertex> corners, unsigned int buffer = 0) {
    static_assert(sizeof(MeshVertex) == 8 * sizeof(float));
    const float* first = buffer != 0 ? nullptr : &corners.front().position.x;
    const auto at = [&](size_t numbers) {
        return reinterpret_cast<const float*>(reinterpret_cast<uintptr_t>(first) + numbers * sizeof(float));
    };
    drawArrays(GL_TRIANGLES, static_cast<int>(corners.size()), sizeof(MeshVertex),
               {{shader.attributeHandle("position"), 3, at(0)},
                {shader.attributeHandle("normal"), 3, at(3)},
                {shader.attributeHandle("inputTextureCoordinate"), 2, at(6)}},
               buffer);
}

void setAll(Shader& shader, const Uniforms& uniforms) {
    for (const auto& [name, value] : uniforms) {
        if (shader.hasUniform(name))
            shader.setUniform(name, value);
        else
            shader.setUniformStructOrArray(name, value);
    }
}

Uniforms uniformsOf(const MeshDraw& mesh) {
    const glm::vec4 color = mesh.color.value_or(glm::vec4(1));
    Uniforms uniforms{{"isOneColor", mesh.texture ? 0 : 1},
                      {"SourceColor", color},
                      {"shade", mesh.texture ? glm::vec4(1) - color : glm::vec4(0)},
                      {"fade", mesh.fade},
                      {"emission", mesh.emission},
                      {"u_modelMatrix", mesh.modelMatrix},
                      {"u_eyePosition", mesh.eye}};
    addLightUniforms(mesh.lights, uniforms);
    return uniforms;
}

bool looksByPlace(const Look& look) {
    return std::holds_alternative<MaskLook>(look) || std::holds_alternative<GradientLook>(look) ||
           std::holds_alternative<FilterLook>(look);
}

}  // namespace

GLPainter::GLPainter(MakeContext makeContext, platform::FileGate& gate, PictureMemory memory)
    : makeContext_(std::move(makeContext)), memory_(memory), shaders_(gate), filters_(shaders_, gate) {}

GLPainter::~GLPainter() {
    if (!context_) return;
    const platform::GLContextScope scope(*context_);
    if (scope.active()) release();
}

std::string GLPainter::device() const { return context_ ? context_->caps().renderer : std::string(); }

void GLPainter::makeCurrent() {
    if (!context_) context_ = makeContext_();
    context_->makeCurrent();
}

void GLPainter::release() {
    if (!context_) return;
    destroyBuffers();
    filters_.release();
    shaders_.useShaderObject(nullptr);  // GL keeps the program in use
    shaders_.removeAllShaders();
}

// --- pictures ------------------------------------------------------------------------------------------

void GLPainter::beginFrame(int width, int height, uint32_t background) {
    beginPart(width, height, {0, 0, width, height}, background);
}

void GLPainter::beginPart(int width, int height, const Region& part, uint32_t background) {
    makeCurrent();
    createBuffers(width, height);
    resetState();
    bind({samples_.frameBuffer(), width, height, part, true});
    clear(background, true);
}

/// Large enough for every frame so far.
void GLPainter::createBuffers(int width, int height) {
    if (samples_.width() >= width && samples_.height() >= height) return;
    width = std::max(width, samples_.width());
    height = std::max(height, samples_.height());
    destroyBuffers();
    samples_.create(width, height, samplesAPixel);
    resolved_.create();
    resolvedColor_.create();
    glBindFramebuffer(GL_FRAMEBUFFER, resolved_.name());
    glBindRenderbuffer(GL_RENDERBUFFER, resolvedColor_.name());
    glRenderbufferStorage(GL_RENDERBUFFER, GL_RGBA8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, resolvedColor_.name());
}

void GLPainter::destroyBuffers() {
    samples_.destroy();
    resolved_.destroy();
    resolvedColor_.destroy();
}

void GLPainter::endFrame(const platform::Canvas& picture) {
    const Region part = targets_.back().part;
    unsigned int finished = samples_.frameBuffer();
    if (samples_.samples() > 1) {
        // Still clipped to the part.
        samples_.resolveInto(resolved_.name());
        finished = resolved_.name();
    }
    readFramebuffer(finished, part.left, part.bottom, picture);
    samples_.discard();
    targets_.clear();
    shaders_.useShaderObject(nullptr);  // another painter may draw in the same context next
}

void GLPainter::beginTarget(QVFrameBufferToTexture& target) {
    makeCurrent();
    const int width = target.fboWidth(), height = target.fboHeight();
    bind({target.frameBuffer(), width, height, {0, 0, width, height}, false});
    clear(0, false);
}

void GLPainter::endTarget() {
    if (targets_.back().addedDepth)
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, 0);
    targets_.pop_back();
    if (!targets_.empty()) bindAgain();
}

/// Gives the current target depths, until it ends.
void GLPainter::addDepth() {
    Target& target = targets_.back();
    if (target.hasDepth || target.addedDepth) return;
    target.addedDepth = std::make_shared<GLRenderbuffer>();
    target.addedDepth->create();
    glBindRenderbuffer(GL_RENDERBUFFER, target.addedDepth->name());
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT16, target.width, target.height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER,
                              target.addedDepth->name());
    glClear(GL_DEPTH_BUFFER_BIT);
}

void GLPainter::bind(const Target& target) {
    targets_.push_back(target);
    glBindFramebuffer(GL_FRAMEBUFFER, target.framebuffer);
    glViewport(0, 0, target.width, target.height);
    glEnable(GL_SCISSOR_TEST);
    glScissor(target.part.left, target.part.bottom, target.part.width, target.part.height);
}

void GLPainter::bindAgain() {
    const Target target = targets_.back();
    targets_.pop_back();
    bind(target);
}

void GLPainter::clear(uint32_t background, bool withDepth) {
    const auto part = [&](int shift) { return static_cast<float>(background >> shift & 255) / 255; };
    glClearColor(part(16), part(8), part(0), part(24));
    glClear(GL_COLOR_BUFFER_BIT | (withDepth ? GL_DEPTH_BUFFER_BIT : 0u));
}

// --- programs ------------------------------------------------------------------------------------------

std::shared_ptr<Shader> GLPainter::shader(const std::string& path) {
    makeCurrent();
    return shaders_.createShader(path, path);
}

void GLPainter::use(Shader& shader) { shaders_.useShaderObject(&shader); }

Shader& GLPainter::named(const std::string& name) {
    Shader& shader = *shaders_.createShader(name, name + ".plist");
    use(shader);
    return shader;
}

Shader& GLPainter::blurShader() {
    constexpr unsigned int radius = 8;  // texels
    constexpr double sigma = 16.0;
    auto shader = shaders_.shaderForName(blurShaderName);
    if (!shader)
        shader = shaders_.createShaderWithVertex(
            *QVObject3DShaderCreater::vertexShaderForOptimizedBlurOfRadius(radius, sigma),
            *QVObject3DShaderCreater::fragmentShaderForOptimizedBlurOfRadius(radius, sigma),
            {"position", "inputTextureCoordinate"},
            {"u_textureMatrix", "u_mvpMatrix", "videoFrame", "texelWidthOffset", "texelHeightOffset"},
            blurShaderName);
    use(*shader);
    return *shader;
}

void GLPainter::apply(const DrawState& state) {
    if (state.depthTest && targets_.back().hasDepth)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(state.blend.source, state.blend.destination, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
}

/// On unit 0 the caller says how it is wrapped. Unit 0 is active afterwards.
void GLPainter::bindTexture(Shader& shader, const char* sampler, int unit, Texture* texture,
                            TextureWrap wrap) {
    glActiveTexture(static_cast<GLenum>(GL_TEXTURE0 + unit));
    glBindTexture(GL_TEXTURE_2D, texture ? texture->glName() : 0);
    if (texture && memory_ == PictureMemory::Dropped) texture->dropMemory();
    if (unit != 0) {
        setTextureWrap(wrap);
        glActiveTexture(GL_TEXTURE0);
    }
    shader.setUniform(sampler, unit);
}

// --- quads ---------------------------------------------------------------------------------------------

Shader& GLPainter::prepare(const PlainLook& look, const QuadDraw& quad) {
    // Opaque pictures come out as they are.
    if (look.opacity >= 1 && quad.texture->isOpaque()) return named("normal_renderShader");
    Shader& shader = named("diaphaneity_Shader");
    shader.setUniform("aplae", look.opacity);
    return shader;
}

Shader& GLPainter::prepare(const MaskLook& look, const QuadDraw&) {
    Shader& shader = named(look.countsAlpha ? "maskAlpha_Shader" : "reversalMask_Shader");
    shader.setUniform("aplae", look.opacity);
    shader.setUniform("maskMatrix", coordinatesFromPlace(look.maskCoordinates));
    shader.setUniform("isMaskPreMultiplication", look.mask->isPremultiplied() ? 1 : 0);
    bindTexture(shader, "frameTexture", 1, look.mask);
    return shader;
}

Shader& GLPainter::prepare(const GradientLook& look, const QuadDraw&) {
    Shader& shader = named("alphaGradual_Shader");
    shader.setUniform("startAlpha", look.start);
    shader.setUniform("endAlpha", look.end);
    shader.setUniform("interpolation", look.interpolation);
    return shader;
}

Shader& GLPainter::prepare(const FilterLook& look, const QuadDraw& quad) {
    Shader& shader = named("frame_Shader");
    const QuadMeasure measure = measured(quad, targets_.back().width, targets_.back().height);
    shader.setUniform("frameSize", measure.size);
    shader.setUniform("pixelsAUnit", measure.pixelsAUnit);
    shader.setUniform("cornerRadius", look.cornerRadius);
    shader.setUniform("aplae", look.opacity);
    shader.setUniform("filterType", look.type);
    shader.setUniform("RANGE", look.range);
    shader.setUniform("pixelSize", look.pixelSize);
    shader.setUniform("framew", look.borderWidth);
    shader.setUniform("inputColor", look.borderColor);
    shader.setUniform("glColor", look.pictureColor);
    shader.setUniform("reflection", look.isReflection ? 1 : 0);
    shader.setUniform("textureSize", look.pictureSize);
    shader.setUniform("filterNormalTime", look.time);
    return shader;
}

Shader& GLPainter::prepare(const KeyLook& look, const QuadDraw&) {
    Shader& shader = named("chromaKey_Shader");
    shader.setUniform("chromaKeyColor", look.color);
    shader.setUniform("maxEclosion", look.softEdge);
    return shader;
}

/// The blur cannot divide by alpha after mixing texels, so its colours are blended as they are.
Shader& GLPainter::prepare(const BlurLook& look, const QuadDraw& quad) {
    Shader& shader = blurShader();
    shader.setUniform("texelWidthOffset", 2 / look.pictureSize.x);
    shader.setUniform("texelHeightOffset", 2 / look.pictureSize.y);
    const BlendFunction& blend = quad.state.blend;
    const bool countsSourceColor =
        blend.destination == GL_SRC_COLOR || blend.destination == GL_ONE_MINUS_SRC_COLOR;
    if (quad.texture->isPremultiplied() && blend.source == GL_SRC_ALPHA && !countsSourceColor)
        glBlendFuncSeparate(GL_ONE, blend.destination, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    return shader;
}

Shader& GLPainter::prepare(const ColorLook& look, const QuadDraw& quad) {
    Shader& shader = named("color_renderShader");
    const glm::vec2 sent = sentColors(quad.state.blend);
    const float alpha = look.color.a * look.opacity;
    const float ofColors = sent.x > 0 ? alpha : sent.y > 0 ? look.opacity : 1;
    shader.setUniform("SourceColor", glm::vec4(glm::vec3(look.color) * ofColors, alpha));
    return shader;
}

Shader& GLPainter::prepare(const ShaderLook& look, const QuadDraw&) {
    use(*look.shader);
    setAll(*look.shader, look.uniforms);
    return *look.shader;
}

Texture& GLPainter::filtered(const QuadDraw& quad) {
    Texture& result = filters_.filtered(*quad.texture, *quad.filters, isUpsideDown(quad));
    if (memory_ == PictureMemory::Dropped) quad.texture->dropMemory();
    bindAgain();
    return result;
}

void GLPainter::paint(const QuadDraw& quad) {
    if (targets_.empty()) return;
    if (quad.filters && quad.texture) {
        QuadDraw shown = quad;
        shown.texture = &filtered(quad);
        shown.filters = nullptr;
        return paint(shown);
    }
    apply(quad.state);
    Shader& shader = std::visit([&](const auto& look) -> Shader& { return prepare(look, quad); }, quad.look);
    if (shader.programHandle() == 0) return;
    const bool isByPlace = looksByPlace(quad.look);
    if (quad.texture) {
        bindTexture(shader, "videoFrame", 0, quad.texture);
        setTextureWrap(quad.mayRepeat && leavesPicture(quad) ? TextureWrap::Repeat
                                                             : TextureWrap::ClampToEdge);
        shader.setUniform("isPreMultiplication", quad.texture->isPremultiplied() ? 1 : 0);
    }
    shader.setUniform("u_mvpMatrix", quad.mvpMatrix);
    shader.setUniform(
        "u_textureMatrix",
        isByPlace ? quad.textureMatrix * coordinatesFromPlace(quad.textureCoordinates) : quad.textureMatrix);
    shader.setUniform("sentColors", sentColors(quad.state.blend));
    const auto& coordinates = isByPlace ? cornerPlaces : quad.textureCoordinates;
    drawArrays(GL_TRIANGLE_FAN, 4, 0,
               {{shader.attributeHandle("position"), 3, quad.corners.data()},
                {shader.attributeHandle("inputTextureCoordinate"), 2, coordinates.data()}});
}

// --- triangles -----------------------------------------------------------------------------------------

void GLPainter::paint(const LettersDraw& letters) {
    if (targets_.empty()) return;
    apply(letters.state);
    Shader& shader = named("font_2dShader");
    bindTexture(shader, "videoFrame", 0, letters.atlas);
    shader.setUniform("u_mvpMatrix", letters.mvpMatrix);
    shader.setUniform("u_textureMatrix", glm::mat4(1));
    shader.setUniform("SourceColor", letters.color);
    shader.setUniform("sentColors", sentColors(letters.state.blend));
    drawTriangles(shader, letters.corners);
}

/// A convex shape is in order when what faces away is drawn first. Where the near hides the far and depths
/// are compared, what faces the viewer goes first: the rest is then never shaded.
void GLPainter::paint(const MeshDraw& mesh) {
    if (targets_.empty()) return;
    apply(mesh.state);
    if (mesh.comparesDepths) {
        addDepth();
        glEnable(GL_DEPTH_TEST);
    }
    const auto shader =
        shaders_.createShaderWithDefinitions(mesh.shader, mesh.shader + ".plist", meshDefinitions(mesh));
    use(*shader);
    const TextureWrap wrap = mesh.mayRepeat && leavesPicture(mesh.textureMatrix, mesh.cornerCoordinates)
                                 ? TextureWrap::Repeat
                                 : TextureWrap::ClampToEdge;
    if (mesh.emissionTexture) {
        bindTexture(*shader, "emissionPicture", 1, mesh.emissionTexture, wrap);
        shader->setUniformStructOrArray("emissionPicture", 1);  // not in every variant, so not listed
    }
    bindTexture(*shader, "videoFrame", 0, mesh.texture);
    if (mesh.texture) setTextureWrap(wrap);
    const bool isPremultiplied = mesh.texture && mesh.texture->isPremultiplied();
    shader->setUniform("isPreMultiplication", isPremultiplied ? 1 : 0);
    shader->setUniform("u_mvpMatrix", mesh.mvpMatrix);
    shader->setUniform("u_textureMatrix", mesh.textureMatrix);
    const glm::vec2 sent = sentColors(mesh.state.blend);
    shader->setUniform("sentColors", mesh.alphaIsOpacity ? glm::vec2(sent.x + sent.y, 0) : sent);
    setAll(*shader, uniformsOf(mesh));
    const bool hides = mesh.isOpaque && mesh.state.blend == BlendFunction();
    if (hides) glDisable(GL_BLEND);
    glEnable(GL_CULL_FACE);
    const bool isNearFirst =
        hides && mesh.state.depthTest && (targets_.back().hasDepth || mesh.comparesDepths);
    if (mesh.sides == MeshSides::Outer)
        drawSide(*shader, mesh, true);
    else
        for (const bool isNear : {isNearFirst, !isNearFirst}) drawSide(*shader, mesh, isNear);
    glDisable(GL_CULL_FACE);
}

void GLPainter::drawSide(Shader& shader, const MeshDraw& mesh, bool isOutside) {
    glCullFace(isOutside ? GL_BACK : GL_FRONT);
    shader.setUniform("u_normalMatrix", isOutside ? mesh.normalMatrix : -mesh.normalMatrix);
    drawTriangles(shader, mesh.corners, mesh.kept ? mesh.kept->glName() : 0);
}

}  // namespace multiscene
