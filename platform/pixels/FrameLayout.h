// A drawn picture in a frame of another shape. Nothing is squashed unless somebody asks for it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace platform {

/// What happens where the two shapes differ.
enum class Fit {
    Blur,     ///< the whole picture, before a blurred and darkened copy that fills the frame
    Pad,      ///< the whole picture, black beside it
    Crop,     ///< the picture fills the frame and loses its edges
    Stretch,  ///< drawn in the frame's shape, which squashes what fixes its own
};

/// "pad", "crop", "stretch", "blur"; nothing for any other word.
std::optional<Fit> fitNamed(std::string_view name);

/// In pixels. The drawn picture lies in the middle of the frame, or the frame in the middle of the picture.
struct FrameLayout {
    int drawnWidth = 0, drawnHeight = 0;
    int width = 0, height = 0;  ///< of the frame
    bool blursMargins = false;

    /// A frame that is drawn as it is.
    static FrameLayout whole(int width, int height) { return {width, height, width, height, false}; }
    /// A picture of the shape `ownWidth` : `ownHeight` in a frame of even size. Shapes that differ by no more
    /// than rounding are the same.
    static FrameLayout fitted(int ownWidth, int ownHeight, int width, int height, Fit fit);

    bool isWhole() const { return drawnWidth == width && drawnHeight == height; }
    bool operator==(const FrameLayout&) const = default;
};

/// Puts drawn pictures into frames. One thread at a time.
class FramePlacer {
  public:
    explicit FramePlacer(const FrameLayout& layout) : layout_(layout) {}

    const FrameLayout& layout() const { return layout_; }
    /// Fills `frame`. Both are four bytes a pixel, alpha last, rows packed; either order of the colours and
    /// of the rows. The result is the same bit for bit on every processor.
    void place(const uint8_t* drawn, uint8_t* frame);

  private:
    void copyMiddle(const uint8_t* drawn, uint8_t* frame) const;
    void average(const uint8_t* drawn);
    void blur();
    void mixRows(int y);
    void fillRow(int from, int to, uint8_t* row) const;
    void fillMargins(uint8_t* frame);

    FrameLayout layout_;
    int smallWidth_ = 0, smallHeight_ = 0;
    std::vector<uint16_t> small_;  ///< the blurred copy, three colours a pixel, 0 to 255 * 64
    /// Where a column of the frame lies among those of the copy, in 256ths.
    struct Column {
        int first, second, share;
    };
    std::vector<Column> columns_;
    std::vector<int> mixed_;  ///< two rows of the copy, mixed for a row of the frame
};

}  // namespace platform
