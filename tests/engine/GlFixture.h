// A software GL context for every test of a suite, and pixels in and out.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "core/GLESUtils/QVFrameBufferToTexture.h"
#include "core/GLESUtils/QVGlContextManager.h"
#include "core/GLESUtils/ReadBack.h"
#include "core/GLESUtils/TextureUpload.h"
#include "opengl2.0/ShaderManager/ShaderManager.h"
#include "platform/gl/GLContext.h"
#include "tests/engine/MediaFiles.h"

namespace multiscene::testing {

class GlFixture : public ::testing::Test {
  protected:
    GlFixture() : context_(platform::GLContext::create(platform::GLContext::Driver::Software)) {
        context_->makeCurrent();
        QVGlContextManager::shared().setContext(context_);
        ShaderManager::sharedManager().removeAllShaders();
        ShaderManager::sharedManager().clearFailures();
    }
    ~GlFixture() override { ShaderManager::sharedManager().removeAllShaders(); }

    /// A texture of one colour, or of the given pixels in rows of `width`.
    static GLTexture texture(const std::vector<Pixel>& pixels, int width = 1) {
        GLTexture result;
        result.create();
        uploadTexture(result.name(), {.pixels = pixels[0].data(),
                                      .width = width,
                                      .height = int(pixels.size()) / width,
                                      .stride = width * 4});
        return result;
    }

    /// The pixels of a framebuffer, bottom row first.
    static std::vector<Pixel> read(unsigned int framebuffer, int width, int height) {
        std::vector<Pixel> pixels(size_t(width) * size_t(height));
        readFramebuffer(framebuffer, width, height, PixelOrder::RGBA, pixels[0].data(), width * 4);
        return pixels;
    }

    std::shared_ptr<platform::GLContext> context_;
};

}  // namespace multiscene::testing
