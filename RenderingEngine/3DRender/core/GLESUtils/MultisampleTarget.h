// The multisampled framebuffer that frames are drawn into, and its resolve.
#pragma once

#include "core/GLESUtils/GLObject.h"

namespace multiscene {

/// RGBA8 colour and 16-bit depth renderbuffers of one size. Asks for a number of samples and takes what the
/// driver gives: never fewer where it can, one where it has no multisampling. Needs the context current
/// throughout.
class MultisampleTarget {
  public:
    MultisampleTarget() = default;

    /// Makes the buffers once; nothing happens when they exist. Sizes in pixels, samples from 1. The
    /// framebuffer bound before is bound afterwards.
    void create(int width, int height, int samples);
    /// May run twice.
    void destroy();

    /// Copies the colour, averaged over the samples, into another framebuffer of the same size, as far as the
    /// scissor box lets it. Only with several samples. That framebuffer stays bound.
    void resolveInto(unsigned int framebuffer);
    /// Tells the driver that colour and depth are no longer needed; this framebuffer stays bound for drawing.
    void discard();

    int width() const { return width_; }
    int height() const { return height_; }
    /// The samples that the driver really took, at least 1.
    int samples() const { return samples_; }
    unsigned int frameBuffer() const { return framebuffer_.name(); }

  private:
    int width_ = 0, height_ = 0, samples_ = 1;
    GLFramebuffer framebuffer_;
    GLRenderbuffer color_, depth_;
};

}  // namespace multiscene
