#include "core/GLESUtils/MultisampleTarget.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <array>

#include "platform/gl/GLContext.h"

namespace multiscene {

namespace {

const platform::GLCaps& caps() { return platform::GLContext::current()->caps(); }

void storage(GLenum format, int samples, int width, int height) {
    if (samples > 1)
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, format, width, height);
    else
        glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
}

void blit(unsigned int from, unsigned int to, const std::vector<PixelRect>& regions) {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, from);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, to);
    for (const PixelRect& region : regions) {
        const int right = region.x + region.width, top = region.y + region.height;
        glBlitFramebuffer(region.x, region.y, right, top, region.x, region.y, right, top, GL_COLOR_BUFFER_BIT,
                          GL_NEAREST);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, to);
}

/// Without a blit there is one sample: the colours are copied into the texture that the target draws into.
void copyIntoAttachedTexture(unsigned int source, unsigned int target, int width, int height) {
    GLint texture = 0;
    glBindFramebuffer(GL_FRAMEBUFFER, target);
    glGetFramebufferAttachmentParameteriv(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0,
                                          GL_FRAMEBUFFER_ATTACHMENT_OBJECT_NAME, &texture);
    glBindFramebuffer(GL_FRAMEBUFFER, source);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(texture));
    glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, width, height);
    glBindTexture(GL_TEXTURE_2D, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, target);
}

}  // namespace

void MultisampleTarget::create(int width, int height, int samples) {
    if (framebuffer_) return;
    width_ = width;
    height_ = height;
    samples_ = std::clamp(samples, 1, caps().maxSamples);
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    const auto attach = [&](GLRenderbuffer& buffer, GLenum format, int samplesAPixel, GLenum attachment) {
        buffer.create();
        glBindRenderbuffer(GL_RENDERBUFFER, buffer.name());
        storage(format, samplesAPixel, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, buffer.name());
    };
    if (caps().drawsBgraFaster) {
        averaged_.create();
        glBindFramebuffer(GL_FRAMEBUFFER, averaged_.name());
        attach(averagedColor_, GL_RGBA8, 1, GL_COLOR_ATTACHMENT0);
    }
    framebuffer_.create();
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_.name());
    attach(depth_, GL_DEPTH_COMPONENT16, samples_, GL_DEPTH_ATTACHMENT);
    attach(color_, GL_RGBA8, samples_, GL_COLOR_ATTACHMENT0);
    if (samples_ > 1) glGetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_SAMPLES, &samples_);
    samples_ = std::max(samples_, 1);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
}

void MultisampleTarget::destroy() {
    framebuffer_.destroy();
    color_.destroy();
    depth_.destroy();
    averaged_.destroy();
    averagedColor_.destroy();
}

void MultisampleTarget::bindAndClear() {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_.name());
    glClearColor(0, 0, 0, 0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glBindRenderbuffer(GL_RENDERBUFFER, color_.name());
}

void MultisampleTarget::resolveInto(unsigned int framebuffer) {
    if (!caps().blit) return copyIntoAttachedTexture(framebuffer_.name(), framebuffer, width_, height_);
    resolveInto(framebuffer, std::vector{PixelRect{0, 0, width_, height_}});
}

void MultisampleTarget::resolveInto(unsigned int framebuffer, const std::vector<PixelRect>& regions) {
    if (averaged_) blit(framebuffer_.name(), averaged_.name(), regions);
    blit(averaged_ ? averaged_.name() : framebuffer_.name(), framebuffer, regions);
}

void MultisampleTarget::discard() {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_.name());
    constexpr std::array<GLenum, 2> attachments{GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
    if (caps().invalidate)
        glInvalidateFramebuffer(GL_FRAMEBUFFER, static_cast<GLsizei>(attachments.size()), attachments.data());
}

}  // namespace multiscene
