// Finds the parts of a frame where multisampling can make a difference: along the visible outlines of what is
// drawn. A frame is drawn with one sample first, while its outlines are recorded, and then once more,
// multisampled, inside the few regions that outlines cross. The picture is the one that multisampling all of
// it gives, for a fraction of the work of a software renderer.
#pragma once

#include <glm/glm.hpp>
#include <optional>
#include <vector>

namespace multiscene {

/// Pixels from the lower left corner, as GL counts them.
struct PixelRect {
    int x = 0, y = 0, width = 0, height = 0;
};

/// How far a picture is fully transparent inside each of its edges, as parts of its height or width: where
/// that is enough, the edge of a quad that shows all of the picture upright cannot be seen.
struct ClearMargin {
    float lower = 0, right = 0, upper = 0, left = 0;
};

/// What is known of a picture's alpha channel.
struct PictureAlpha {
    ClearMargin clearMargin;
    bool isOpaque = false;  ///< 255 everywhere
};

/// One instance, used on the render queue. Drawing helpers report to it; the render driver steers it.
class FrameEdges {
  public:
    static FrameEdges& shared();

    /// From here on outlines are recorded, in a picture of this size.
    void beginRecording(int width, int height);
    /// Ends it. The regions that need multisampling, disjoint, possibly none; nothing when all of the picture
    /// needs it, or so much that drawing twice is no gain.
    std::optional<std::vector<PixelRect>> endRecording();

    /// From here on only what touches the region is let through.
    void clipTo(const PixelRect& region);
    void endClipping();

    /// A quad with these corners (4 times x, y, z) is about to be drawn. False: it lies outside the region
    /// that is being drawn, leave it out.
    bool admits(const glm::mat4& mvpMatrix, const float* positions, const ClearMargin& margin);
    /// Something is about to be drawn, or a state set, whose edges are not known.
    void requireMultisampling();
    /// Outlines are invisible only under the default blend function.
    void setBlendsByAlpha(bool blendsByAlpha) { blendsByAlpha_ = blendsByAlpha; }

  private:
    enum class Mode { Off, Recording, Clipping };
    struct Outline;

    std::optional<Outline> project(const glm::mat4& mvpMatrix, const float* positions) const;
    void record(const Outline& outline, const ClearMargin& margin);
    void markEdge(glm::vec2 from, glm::vec2 to);
    std::vector<PixelRect> mergedTiles() const;

    Mode mode_ = Mode::Off;
    bool blendsByAlpha_ = true;
    bool isWholePictureNeeded_ = false;
    int width_ = 0, height_ = 0, columns_ = 0, rows_ = 0;
    std::vector<bool> tiles_;
    int drawnQuads_ = 0;
    PixelRect clip_;
};

}  // namespace multiscene
