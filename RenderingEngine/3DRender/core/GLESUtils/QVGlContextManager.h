// The shared GL context, for the parts of the engine that make or delete GL objects without knowing the
// driver.
#pragma once

#include <memory>

#include "platform/gl/GLContext.h"

namespace multiscene {

/// Holds the render driver's context weakly: the driver owns it. Set and used on the render thread.
class QVGlContextManager {
  public:
    static QVGlContextManager& shared();

    void setContext(const std::shared_ptr<platform::GLContext>& context) { context_ = context; }
    std::shared_ptr<platform::GLContext> context() const { return context_.lock(); }
    /// Makes the shared context current; without one, whatever is current stays so. Returns whether a context
    /// is current afterwards.
    bool useContext();

  private:
    std::weak_ptr<platform::GLContext> context_;
};

}  // namespace multiscene
