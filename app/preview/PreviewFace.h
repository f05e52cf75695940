// What the window of a preview shows beside the picture.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/image/Image.h"
#include "platform/pixels/Surface.h"

namespace multiscene {

/// A panel of the window, drawn by the processor. Opaque; lengths in pixels.
class PreviewPanel {
  public:
    /// Black; the version changes.
    void resize(int width, int height);
    void fill(int x, int y, int width, int height, uint32_t rgb);
    /// A text whose letters begin at x, its upper edge at y.
    void put(const platform::Bitmap& text, int x, int y);

    platform::Surface surface() const;
    uint64_t version() const { return version_; }
    int width() const { return width_; }
    int height() const { return height_; }

  private:
    int width_ = 0, height_ = 0;
    uint64_t version_ = 0;
    std::vector<uint32_t> pixels_;
};

/// Draws the panels. One thread.
class PreviewFace {
  public:
    struct Bar {
        double done = 0;          ///< 0 to 1
        std::string left, right;  ///< a line each
    };

    /// Of letters and bars, for screens with several pixels a point.
    void setScale(double scale) { scale_ = scale; }

    int barHeight() const;
    const PreviewPanel& bar(int width, const Bar& bar);
    /// Lines of text, the first ones where there is no room for all; `title` above them, none when empty.
    const PreviewPanel& message(int width, int mostHeight, const std::string& title, uint32_t titleColor,
                                const std::string& text);
    const PreviewPanel& overlay(const std::string& text);

  private:
    struct Line {
        std::string text;
        platform::Bitmap picture;
    };
    /// As many lines as fit, or one.
    platform::Bitmap drawn(const std::string& text, int width, int height, uint32_t rgb) const;
    const platform::Bitmap& line(Line& kept, const std::string& text, int width);
    int pixels(double points) const;

    double scale_ = 1;
    PreviewPanel bar_, message_, overlay_;
    Line left_, right_;
    std::string messageKey_, overlayKey_;
};

}  // namespace multiscene
