#include "core/GLESUtils/QVGlContextManager.h"

namespace multiscene {

QVGlContextManager& QVGlContextManager::shared() {
    static QVGlContextManager manager;
    return manager;
}

bool QVGlContextManager::useContext() {
    if (const auto context = context_.lock()) context->makeCurrent();
    return platform::GLContext::current() != nullptr;
}

}  // namespace multiscene
