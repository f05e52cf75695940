#pragma once

#include <cstdint>
#include <glm/glm.hpp>

#include "core/GLESUtils/FrameEdges.h"

namespace multiscene {

/// What alpha is to the colours that a draw gives.
enum class SourceColors {
    Straight,       ///< colours are not multiplied by alpha
    Premultiplied,  ///< they are
    Opaque,         ///< alpha is 1 everywhere
};

/// The fixed-function state that nodes change around their drawing. GL context current.
class GLState {
  public:
    static void setDepthTest(bool enabled);
    /// The depth test is on, and the bound target has a depth buffer for it.
    static bool comparesDepths();
    /// Blending on with these colour factors (GL enums). Alpha is always accumulated with
    /// (ONE, ONE_MINUS_SRC_ALPHA), so that what is drawn into a texture keeps a usable alpha.
    static void setBlendFunction(uint32_t srcFactor, uint32_t dstFactor);
    /// Source alpha / one minus source alpha.
    static void resetBlendFunction();
    /// The blend function in force gives the same picture for colours that alpha multiplies already, once
    /// they are announced as such.
    static bool canBlendPremultiplied();
    /// The texture's colours, with an opacity on top, can be blended as they are.
    static bool takesColors(SourceColors colors);
    /// What is drawn in these colours leaves nothing of what is behind it.
    static bool hides(SourceColors colors);
    /// What else a shader must do to the straight colours that it gives, the uniform "sentColors". x is 1: it
    /// multiplies them by alpha and opacity, for source factor ONE. y is 1: by the opacity alone, so that it
    /// fades what a draw adds under factors that alpha is no part of.
    static glm::vec2 sentColors();
    /// Tells what is drawn next, and Straight when that has been drawn; the picture stays the same. Anything
    /// but Straight only where canBlendPremultiplied().
    static void announceColors(SourceColors colors);
    /// The state in which every frame starts: blending on with the default function, depth test off.
    static void setDefaults();
    static void finish();

    /// Draws go to this framebuffer, over its whole size in pixels.
    static void bindTarget(uint32_t framebuffer, int32_t width, int32_t height);
    /// Draws, clears and resolves touch only this region of the bound target.
    static void setScissor(const PixelRect& region);
    static void resetScissor();
    /// Clears the bound target's colour to transparent.
    static void clearColor();
    static void bindTexture(int unit, uint32_t texture);
};

}  // namespace multiscene
