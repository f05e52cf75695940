// Owners of single GL objects. Each holds one name and deletes it; 0 means none.
#pragma once

#include <utility>

namespace multiscene {

enum class GLObjectKind { Texture, Framebuffer, Renderbuffer, Buffer };

/// Objects of a kind made and not yet deleted, in all contexts: what tests count leaks with.
int liveGLObjects(GLObjectKind kind);

/// Move-only owner of one GL name. create(), destroy() and destruction need the object's context current;
/// without any current context destroy() only forgets the name, since the context takes its objects with it.
template <GLObjectKind kind>
class GLObject {
  public:
    GLObject() = default;
    GLObject(GLObject&& other) noexcept : name_(std::exchange(other.name_, 0)) {}
    GLObject& operator=(GLObject&& other) noexcept;
    ~GLObject() { destroy(); }

    /// Generates a name when there is none yet.
    void create();
    /// Deletes the object and zeroes the name; may run twice.
    void destroy();
    unsigned int name() const { return name_; }
    explicit operator bool() const { return name_ != 0; }

  private:
    unsigned int name_ = 0;
};

template <GLObjectKind kind>
GLObject<kind>& GLObject<kind>::operator=(GLObject&& other) noexcept {
    if (this != &other) {
        destroy();
        name_ = std::exchange(other.name_, 0);
    }
    return *this;
}

using GLTexture = GLObject<GLObjectKind::Texture>;
using GLFramebuffer = GLObject<GLObjectKind::Framebuffer>;
using GLRenderbuffer = GLObject<GLObjectKind::Renderbuffer>;
using GLBuffer = GLObject<GLObjectKind::Buffer>;

}  // namespace multiscene
