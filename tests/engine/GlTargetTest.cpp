// The context, the targets that frames are drawn into, and pixels on their way in and out.
#include <epoxy/gl.h>

#include <numeric>
#include <thread>

#include "GlFixture.h"
#include "core/GLESUtils/DrawQuad.h"
#include "core/GLESUtils/MultisampleTarget.h"
#include "platform/base/Error.h"

namespace multiscene {
namespace {

using platform::GLContext;
using testing::isNear;
using testing::Pixel;

class GlTargetTest : public testing::GlFixture {
  protected:
    static std::vector<uint8_t> ramp(size_t count) {
        std::vector<uint8_t> bytes(count);
        std::iota(bytes.begin(), bytes.end(), uint8_t(0));
        return bytes;
    }
    static unsigned int boundFramebuffer() {
        GLint bound = 0;
        glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
        return unsigned(bound);
    }
    static std::array<int, 4> viewport() {
        std::array<int, 4> values{};
        glGetIntegerv(GL_VIEWPORT, values.data());
        return values;
    }
    static int liveObjects() {
        return liveGLObjects(GLObjectKind::Texture) + liveGLObjects(GLObjectKind::Framebuffer) +
               liveGLObjects(GLObjectKind::Renderbuffer);
    }
};

TEST_F(GlTargetTest, ContextsAreCurrentOnOneThreadAtATime) {
    EXPECT_TRUE(context_->isCurrent());
    EXPECT_TRUE(context_->caps().software);
    EXPECT_GE(context_->caps().maxTextureSize, 2048);
    std::thread([&] {
        EXPECT_EQ(GLContext::current(), nullptr);
        EXPECT_THROW(context_->makeCurrent(), platform::Error);
        EXPECT_FALSE(platform::GLContextScope(*context_).active());
    }).join();
    const auto second = GLContext::create(GLContext::Driver::Software);
    {
        const platform::GLContextScope scope(*second);
        EXPECT_TRUE(second->isCurrent());
    }
    EXPECT_TRUE(context_->isCurrent());
    GLContext::clearCurrent();
    EXPECT_EQ(GLContext::current(), nullptr);
    EXPECT_THROW(GLContext::wrapCurrent(), platform::Error);
    std::thread([&] {
        context_->makeCurrent();
        GLContext::clearCurrent();
    }).join();
    context_->makeCurrent();
}

TEST_F(GlTargetTest, AWrappedContextIsTheSameContext) {
    const GLTexture red = texture({{255, 0, 0, 255}});
    {
        const auto wrapped = GLContext::wrapCurrent();
        EXPECT_TRUE(wrapped->isCurrent());
        EXPECT_TRUE(glIsTexture(red.name()));
    }
    context_->makeCurrent();
    EXPECT_TRUE(glIsTexture(red.name())) << "the wrapper owned nothing";
}

TEST_F(GlTargetTest, BindingARenderTargetIsUndoneExactly) {
    const int before = liveObjects();
    QVFrameBufferToTexture target(719.9, 1279.6);
    EXPECT_EQ(target.fboWidth(), 719);
    EXPECT_EQ(target.fboHeight(), 1279);
    target.destroyFramebuffer();
    QVFrameBufferToTexture outer(8, 8);
    outer.createFrameBufferObject();
    EXPECT_EQ(boundFramebuffer(), 0u);
    glBindFramebuffer(GL_FRAMEBUFFER, outer.frameBuffer());
    glViewport(1, 2, 5, 6);
    target.createFrameBufferObject();
    const unsigned int name = target.frameBuffer();
    target.createFrameBufferObject();
    EXPECT_EQ(target.frameBuffer(), name);
    EXPECT_EQ(boundFramebuffer(), outer.frameBuffer());
    EXPECT_EQ(read(name, 2, 2)[0], (Pixel{0, 0, 0, 0})) << "cleared when made";
    glBindFramebuffer(GL_FRAMEBUFFER, outer.frameBuffer());

    target.bindRenderToTextureFramebuffer();
    EXPECT_EQ(boundFramebuffer(), name);
    EXPECT_EQ(viewport(), (std::array<int, 4>{0, 0, 719, 1279}));
    target.unBindRenderToTextureFramebuffer();
    EXPECT_EQ(boundFramebuffer(), outer.frameBuffer());
    EXPECT_EQ(viewport(), (std::array<int, 4>{1, 2, 5, 6}));
    EXPECT_EQ(liveObjects(), before + 4);
    target.destroyFramebuffer();
    target.destroyFramebuffer();
    outer.destroyFramebuffer();
    EXPECT_EQ(liveObjects(), before);
    EXPECT_EQ(target.CVTextureId(), 0u);
}

TEST_F(GlTargetTest, ResolveAveragesSamplesOnEdges) {
    constexpr int size = 8;
    const std::array<float, 12> slanted{-1, -1, 0, 1, -0.9f, 0, 1, 0.1f, 0, -1, 0, 0};
    for (const int wanted : {1, 2}) {
        MultisampleTarget target;
        target.create(size, size, wanted);
        EXPECT_GE(target.samples(), wanted);
        QVFrameBufferToTexture resolved(size, size);
        resolved.createFrameBufferObject();
        target.bindAndClear();
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), unsigned(GL_FRAMEBUFFER_COMPLETE));
        glViewport(0, 0, size, size);
        const auto shape =
            ShaderManager::sharedManager().createShader("color_renderShader", "color_renderShader.plist");
        shape->useShader();
        shape->setUniform("u_mvpMatrix", glm::mat4(1));
        shape->setUniform("SourceColor", glm::vec4(1));
        drawQuadFan(shape->attributeHandle("position"), 0, {slanted.data(), nullptr});
        target.resolveInto(resolved.frameBuffer());
        EXPECT_EQ(boundFramebuffer(), resolved.frameBuffer());
        const auto pixels = read(resolved.frameBuffer(), size, size);
        target.discard();
        EXPECT_EQ(boundFramebuffer(), target.frameBuffer());
        int partly = 0;
        for (const Pixel& pixel : pixels) partly += pixel[3] != 0 && pixel[3] != 255;
        EXPECT_EQ(partly > 0, target.samples() > 1);
        EXPECT_EQ(pixels[2 * size + 4], (Pixel{255, 255, 255, 255}));
        EXPECT_EQ(pixels[7 * size + 4], (Pixel{0, 0, 0, 0}));
        target.destroy();
        target.destroy();
    }
    EXPECT_EQ(glGetError(), unsigned(GL_NO_ERROR));
}

TEST_F(GlTargetTest, PixelsSurviveTheWayInAndOut) {
    constexpr int width = 5, height = 3;
    for (const int stride : {width * 4, width * 4 + 8, width * 4 + 3})
        for (const PixelOrder order : {PixelOrder::RGBA, PixelOrder::BGRA}) {
            const std::vector<uint8_t> source = ramp(size_t(stride) * height);
            QVFrameBufferToTexture target(width, height);
            target.createFrameBufferObject();
            const BitmapView bitmap{source.data(), width, height, stride, order};
            uploadTexture(target.fboTexture(), bitmap, TextureWrap::ClampToEdge);
            updateTexture(target.fboTexture(), bitmap);
            const int outStride = width * 4 + 12;
            std::vector<uint8_t> out(size_t(outStride) * height, 0xEE);
            readFramebuffer(target.frameBuffer(), width, height, order, out.data(), outStride);
            for (size_t row = 0; row < height; ++row) {
                const auto* from = &source[row * size_t(stride)];
                const auto* to = &out[row * size_t(outStride)];
                EXPECT_TRUE(std::equal(from, from + width * 4, to)) << stride << " row " << row;
                if (row + 1 < height) {
                    EXPECT_EQ(to[width * 4], 0xEE) << "padding untouched";
                }
            }
            const Pixel first = read(target.frameBuffer(), width, height)[0];
            EXPECT_EQ(first[0], order == PixelOrder::RGBA ? 0 : 2);
        }
    EXPECT_EQ(glGetError(), unsigned(GL_NO_ERROR));
}

TEST_F(GlTargetTest, ObjectsMoveAndOutliveTheirContextHarmlessly) {
    const int before = liveGLObjects(GLObjectKind::Texture);
    GLTexture first;
    first.create();
    const unsigned int name = first.name();
    GLTexture second = std::move(first);
    EXPECT_EQ(first.name(), 0u);
    EXPECT_EQ(second.name(), name);
    second = GLTexture();
    EXPECT_FALSE(glIsTexture(name));
    second.create();
    GLContext::clearCurrent();
    second.destroy();
    EXPECT_EQ(liveGLObjects(GLObjectKind::Texture), before);
    context_->makeCurrent();
}

}  // namespace
}  // namespace multiscene
