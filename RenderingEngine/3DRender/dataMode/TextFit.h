// Makes a text fit its texture. For the text model.
#pragma once

#include "platform/text/TextRasterizer.h"

namespace multiscene {

/// How a text was made to fit.
struct TextFit {
    double scale = 1;  ///< the text's size, at most 1
    platform::TextWrap wrap = platform::TextWrap::Words;
    bool complete = true;  ///< false: even the smallest size is too large
};

/// Down to half its size a text shrinks before a word is broken; below, words are broken too.
constexpr double smallestUnbrokenScale = 0.5;
/// A text with line feeds keeps its own lines where that makes it no smaller than this part of the size that
/// broken lines would have.
constexpr double smallestWrittenShare = 0.7;
/// Smaller than this no text is drawn.
constexpr double smallestScale = 0.1;

/// How far a text shrinks: `smallest` at most, and down to `smallestUnbroken` before a word is broken.
struct TextFitLimits {
    double smallest = smallestScale, smallestUnbroken = smallestUnbrokenScale;
};

/// The largest scale at which `layout` fits a texture of `texture` pixels with `margin` kept free on all
/// sides; the margin shrinks with the text, as it is there for its stroke and shadow.
TextFit fitText(platform::TextLayoutDescription layout, platform::TextSize texture, platform::TextSize margin,
                const TextFitLimits& limits = {});

}  // namespace multiscene
