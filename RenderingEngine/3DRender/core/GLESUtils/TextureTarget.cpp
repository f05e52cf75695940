#include "core/GLESUtils/TextureTarget.h"

#include <epoxy/gl.h>

#include "platform/gl/GLContext.h"

namespace multiscene {

void createTextureTarget(GLFramebuffer& framebuffer, GLTexture& texture, int width, int height,
                         TargetShaders shaders) {
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    framebuffer.create();
    texture.create();
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer.name());
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, texture.name());
    const bool isBgra =
        shaders == TargetShaders::OwnOnly && platform::GLContext::current()->caps().drawsBgraFaster;
    const GLenum format = isBgra ? GL_BGRA_EXT : GL_RGBA;
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), width, height, 0, format, GL_UNSIGNED_BYTE,
                 nullptr);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, texture.name(), 0);
    glBindTexture(GL_TEXTURE_2D, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE) {
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(previous));
}

}  // namespace multiscene
