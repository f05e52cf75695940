// The OpenGL ES context that GL draws in: off screen, through EGL, on a GPU driver where one is there and in
// software (Mesa) otherwise.
#pragma once

#include <memory>
#include <string>

namespace platform {

/// What the driver behind a context can do. Read once, when the context is made.
struct GLCaps {
    std::string renderer;  ///< the driver's own name, for messages
    std::string version;
    int majorVersion = 2;       ///< drivers may answer a request for ES 2 with a later ES
    int maxSamples = 1;         ///< 1: no multisampled renderbuffers
    bool invalidate = false;    ///< glInvalidateFramebuffer exists
    bool bgraUpload = false;    ///< GL_BGRA_EXT as a texture format
    bool bgraReadBack = false;  ///< GL_BGRA_EXT in glReadPixels
    bool rowLength = false;     ///< GL_UNPACK_ROW_LENGTH and GL_PACK_ROW_LENGTH
    bool software = false;      ///< drawn by the processor
};

/// An OpenGL ES context without a surface. It may be current on one thread at a time; every GL object belongs
/// to the context (or share group) it was made in. The context lives as long as its last shared_ptr, and
/// takes its objects with it.
class GLContext : public std::enable_shared_from_this<GLContext> {
  public:
    enum class Driver {
        Automatic,  ///< a GPU where one works, else software; MULTISCENE_SOFTWARE_GL=1 in the environment:
                    ///< software
        Software,   ///< the same pixels on every machine
    };

    /// Makes a context; it is current nowhere yet. Throws Error(Failed) when there is no EGL or no driver.
    static std::shared_ptr<GLContext> create(Driver driver = Driver::Automatic);
    /// The EGL context that is current on this thread, such as a window's, with its surface. Its maker keeps
    /// owning it and must outlive this object. Throws Error(Failed) when none is current.
    static std::shared_ptr<GLContext> wrapCurrent();

    GLContext(const GLContext&) = delete;
    GLContext& operator=(const GLContext&) = delete;
    ~GLContext();

    /// Makes this context current on the calling thread; does nothing when it is. Throws Error(Failed), as
    /// when it is current on another thread.
    void makeCurrent();
    bool isCurrent() const { return current() == this; }
    /// Leaves the calling thread without a context.
    static void clearCurrent();
    /// The context that makeCurrent() last made current on this thread, or none. GL may be called only when
    /// there is one.
    static GLContext* current();

    const GLCaps& caps() const;

  private:
    struct Implementation;
    explicit GLContext(std::unique_ptr<Implementation> implementation);

    std::unique_ptr<Implementation> implementation_;
};

/// Makes a context current for a scope and brings the previous one back. When the context cannot be made
/// current (it is in use on another thread), active() is false and nothing has changed.
class GLContextScope {
  public:
    explicit GLContextScope(GLContext& context);
    ~GLContextScope();
    GLContextScope(const GLContextScope&) = delete;
    GLContextScope& operator=(const GLContextScope&) = delete;

    bool active() const { return active_; }

  private:
    std::weak_ptr<GLContext> previous_;
    bool active_ = false;
    bool switched_ = false;
};

}  // namespace platform
