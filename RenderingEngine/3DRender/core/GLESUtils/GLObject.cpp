#include "core/GLESUtils/GLObject.h"

#include <epoxy/gl.h>

#include <array>
#include <atomic>

#include "platform/gl/GLContext.h"

namespace multiscene {

namespace {

std::atomic<int>& counter(GLObjectKind kind) {
    static std::array<std::atomic<int>, 4> counters{};
    return counters[static_cast<size_t>(kind)];
}

void generate(GLObjectKind kind, GLuint* name) {
    switch (kind) {
        case GLObjectKind::Texture:
            return glGenTextures(1, name);
        case GLObjectKind::Framebuffer:
            return glGenFramebuffers(1, name);
        case GLObjectKind::Renderbuffer:
            return glGenRenderbuffers(1, name);
        case GLObjectKind::Buffer:
            return glGenBuffers(1, name);
    }
}

void remove(GLObjectKind kind, const GLuint* name) {
    switch (kind) {
        case GLObjectKind::Texture:
            return glDeleteTextures(1, name);
        case GLObjectKind::Framebuffer:
            return glDeleteFramebuffers(1, name);
        case GLObjectKind::Renderbuffer:
            return glDeleteRenderbuffers(1, name);
        case GLObjectKind::Buffer:
            return glDeleteBuffers(1, name);
    }
}

}  // namespace

int liveGLObjects(GLObjectKind kind) { return counter(kind); }

template <GLObjectKind kind>
void GLObject<kind>::create() {
    if (name_ != 0) return;
    generate(kind, &name_);
    if (name_ != 0) ++counter(kind);
}

template <GLObjectKind kind>
void GLObject<kind>::destroy() {
    if (name_ == 0) return;
    if (platform::GLContext::current()) remove(kind, &name_);
    --counter(kind);
    name_ = 0;
}

template class GLObject<GLObjectKind::Texture>;
template class GLObject<GLObjectKind::Framebuffer>;
template class GLObject<GLObjectKind::Renderbuffer>;
template class GLObject<GLObjectKind::Buffer>;

}  // namespace multiscene
