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
}

void MultisampleTarget::resolveInto(unsigned int framebuffer) {
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer_.name());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
    glBlitFramebuffer(0, 0, width_, height_, 0, 0, width_, height_, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
}

void MultisampleTarget::discard() {
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer_.name());
    constexpr std::array<GLenum, 2> attachments{GL_COLOR_ATTACHMENT0, GL_DEPTH_ATTACHMENT};
    if (caps().invalidate)
        glInvalidateFramebuffer(GL_FRAMEBUFFER, static_cast<GLsizei>(attachments.size()), attachments.data());
}

}  // namespace multiscene
