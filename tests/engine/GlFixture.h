// A software GL context for every test of a suite.
#pragma once

#include <gtest/gtest.h>

#include <memory>

#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "platform/gl/GLContext.h"
#include "tests/engine/MediaFiles.h"

namespace multiscene::testing {

class GlFixture : public ::testing::Test {
  protected:
    GlFixture() : context_(platform::GLContext::create(platform::GLContext::Driver::Software)) {
        context_->makeCurrent();
    }

    std::shared_ptr<platform::GLContext> context_;
};

}  // namespace multiscene::testing
