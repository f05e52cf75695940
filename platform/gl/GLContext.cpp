#include "platform/gl/GLContext.h"

#include <dlfcn.h>
#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "platform/base/Error.h"
#include "platform/base/Log.h"
#include "platform/base/Memory.h"

namespace platform {

struct GLContext::Implementation {
    EGLDisplay display = EGL_NO_DISPLAY;
    EGLContext context = EGL_NO_CONTEXT;
    EGLSurface drawSurface = EGL_NO_SURFACE, readSurface = EGL_NO_SURFACE;
    bool owned = true;
    GLCaps caps;

    ~Implementation() {
        if (owned && context != EGL_NO_CONTEXT) eglDestroyContext(display, context);
    }
};

namespace {

thread_local GLContext* currentContext = nullptr;

Error eglError(const std::string& action) {
    const EGLint error = eglGetError();
    char code[16];
    std::snprintf(code, sizeof code, "0x%04X", static_cast<unsigned>(error));
    return Error(error == EGL_BAD_ALLOC ? ErrorKind::Transient : ErrorKind::Failed,
                 "cannot " + action + " (EGL error " + code + ")");
}

/// The loader ends the process when a library is missing, so look first.
void requireLibraries() {
    for (const char* library : {"libEGL.so.1", "libGLESv2.so.2"})
        if (!dlopen(library, RTLD_LAZY | RTLD_LOCAL))
            throw Error(ErrorKind::Failed,
                        std::string("no OpenGL ES here: ") + library + " is not installed");
}

bool hasWord(const char* list, std::string_view word) {
    const std::string padded = " " + std::string(list ? list : "") + " ";
    return padded.find(" " + std::string(word) + " ") != std::string::npos;
}

bool wantsSoftware(GLContext::Driver driver) {
    const char* setting = std::getenv("MULTISCENE_SOFTWARE_GL");
    return driver == GLContext::Driver::Software || (setting && std::string_view(setting) == "1");
}

std::vector<EGLDeviceEXT> devices() {
    if (!epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_platform_device") ||
        !epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_EXT_device_enumeration"))
        return {};
    EGLint count = 0;
    if (!eglQueryDevicesEXT(0, nullptr, &count) || count <= 0) return {};
    std::vector<EGLDeviceEXT> found(static_cast<size_t>(count));
    eglQueryDevicesEXT(count, found.data(), &count);
    found.resize(static_cast<size_t>(std::max(count, 0)));
    return found;
}

bool isSoftware(EGLDeviceEXT device) {
    return hasWord(eglQueryDeviceStringEXT(device, EGL_EXTENSIONS), "EGL_MESA_device_software");
}

/// The displays worth trying, best first: GPUs, then Mesa without a surface, then Mesa's software device.
std::vector<EGLDisplay> candidateDisplays(bool software) {
    std::vector<EGLDisplay> displays;
    const std::vector<EGLDeviceEXT> all = devices();
    const auto addDevices = [&](bool wantSoftware) {
        for (EGLDeviceEXT device : all)
            if (isSoftware(device) == wantSoftware)
                displays.push_back(eglGetPlatformDisplayEXT(EGL_PLATFORM_DEVICE_EXT, device, nullptr));
    };
    if (!software) addDevices(false);
    addDevices(true);
    if (epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless"))
        displays.push_back(
            eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr));
    std::erase(displays, EGL_NO_DISPLAY);
    return displays;
}

EGLContext makeContext(EGLDisplay display) {
    if (!eglInitialize(display, nullptr, nullptr)) return EGL_NO_CONTEXT;
    if (!epoxy_has_egl_extension(display, "EGL_KHR_surfaceless_context")) return EGL_NO_CONTEXT;
    const EGLint wanted[] = {EGL_RENDERABLE_TYPE, EGL_OPENGL_ES2_BIT, EGL_SURFACE_TYPE, 0, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglBindAPI(EGL_OPENGL_ES_API) || !eglChooseConfig(display, wanted, &config, 1, &count) || count < 1)
        return EGL_NO_CONTEXT;
    const EGLint version[] = {EGL_CONTEXT_CLIENT_VERSION, 2, EGL_NONE};
    return eglCreateContext(display, config, EGL_NO_CONTEXT, version);
}

std::string glText(GLenum name) {
    const GLubyte* text = glGetString(name);
    return text ? reinterpret_cast<const char*>(text) : "";
}

int glInteger(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

GLCaps readCaps() {
    GLCaps caps;
    caps.renderer = glText(GL_RENDERER);
    caps.version = glText(GL_VERSION);
    caps.majorVersion = epoxy_gl_version() / 10;
    const bool es3 = caps.majorVersion >= 3;
    caps.maxSamples = es3 ? std::max(1, glInteger(GL_MAX_SAMPLES)) : 1;
    caps.invalidate = es3;
    caps.bgraUpload = epoxy_has_gl_extension("GL_EXT_texture_format_BGRA8888");
    caps.bgraReadBack = epoxy_has_gl_extension("GL_EXT_read_format_bgra");
    caps.rowLength = es3;
    for (const char* name : {"llvmpipe", "softpipe", "swrast", "SwiftShader"})
        if (caps.renderer.find(name) != std::string::npos) caps.software = true;
    return caps;
}

}  // namespace

GLContext::GLContext(std::unique_ptr<Implementation> implementation)
    : implementation_(std::move(implementation)) {
    GLContextScope scope(*this);
    if (!scope.active()) throw eglError("make an OpenGL ES context current");
    implementation_->caps = readCaps();
}

GLContext::~GLContext() {
    if (isCurrent()) clearCurrent();
}

std::shared_ptr<GLContext> GLContext::create(Driver driver) {
    requireLibraries();
    const bool software = wantsSoftware(driver);
    for (EGLDisplay display : candidateDisplays(software)) {
        auto implementation = std::make_unique<Implementation>();
        implementation->display = display;
        implementation->context = makeContext(display);
        if (implementation->context == EGL_NO_CONTEXT) continue;
        std::shared_ptr<GLContext> context(new GLContext(std::move(implementation)));
        if (software && !context->caps().software) continue;
        log::info("OpenGL: " + context->caps().renderer + ", " + context->caps().version);
        return context;
    }
    if (memoryIsShort()) throw Error(ErrorKind::Transient, "out of memory: OpenGL ES does not start");
    throw Error(ErrorKind::Failed,
                "no OpenGL ES driver works here; install Mesa's EGL driver (libegl-mesa0)");
}

std::shared_ptr<GLContext> GLContext::wrapCurrent() {
    requireLibraries();
    auto implementation = std::make_unique<Implementation>();
    implementation->owned = false;
    implementation->display = eglGetCurrentDisplay();
    implementation->context = eglGetCurrentContext();
    implementation->drawSurface = eglGetCurrentSurface(EGL_DRAW);
    implementation->readSurface = eglGetCurrentSurface(EGL_READ);
    if (implementation->context == EGL_NO_CONTEXT)
        throw Error(ErrorKind::Failed, "no EGL context is current");
    std::shared_ptr<GLContext> context(new GLContext(std::move(implementation)));
    context->makeCurrent();
    return context;
}

void GLContext::makeCurrent() {
    if (isCurrent()) return;
    const Implementation& i = *implementation_;
    if (!eglMakeCurrent(i.display, i.drawSurface, i.readSurface, i.context))
        throw eglError("make the OpenGL ES context current");
    currentContext = this;
}

void GLContext::clearCurrent() {
    if (!currentContext) return;
    eglMakeCurrent(currentContext->implementation_->display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    currentContext = nullptr;
}

GLContext* GLContext::current() { return currentContext; }

const GLCaps& GLContext::caps() const { return implementation_->caps; }

GLContextScope::GLContextScope(GLContext& context) {
    GLContext* previous = GLContext::current();
    if (previous == &context) {
        active_ = true;
        return;
    }
    if (previous) previous_ = previous->weak_from_this();
    try {
        context.makeCurrent();
        active_ = switched_ = true;
    } catch (const Error&) {
        active_ = false;
    }
}

GLContextScope::~GLContextScope() {
    if (!switched_) return;
    GLContext::clearCurrent();
    if (const auto previous = previous_.lock()) previous->makeCurrent();
}

}  // namespace platform
