#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <vector>

namespace platform {

/// A picture of one channel of brightness, rows packed.
struct GreyPicture {
    int width = 0, height = 0;
    std::vector<uint8_t> pixels;
};

/// Sums over rectangles of a picture of at most 8 million pixels, in constant time.
class RectangleSums {
  public:
    explicit RectangleSums(const GreyPicture& picture);

    int width() const { return width_ - 1; }
    int height() const { return height_ - 1; }
    int32_t sum(int x, int y, int width, int height) const { return over(sums_, x, y, width, height); }
    int64_t squares(int x, int y, int width, int height) const { return over(squares_, x, y, width, height); }

  private:
    template <typename Number>
    Number over(const std::vector<Number>& table, int x, int y, int width, int height) const {
        const Number* top = &table[size_t(y) * size_t(width_) + size_t(x)];
        const Number* bottom = top + ptrdiff_t(height) * width_;
        return bottom[width] - bottom[0] - top[width] + top[0];
    }

    int width_, height_;  // of the tables: one more than the picture's
    std::vector<int32_t> sums_;
    std::vector<int64_t> squares_;
};

/// A trained judge of small windows: stages of weighted bright and dark rectangles, each of which must be
/// passed. Immutable; any thread.
class FaceCascade {
  public:
    /// Reads trained data in the form of OpenCV's upright Haar cascades. Throws Error(Failed).
    explicit FaceCascade(const std::filesystem::path& file);

    int windowWidth() const { return width_; }    ///< pixels
    int windowHeight() const { return height_; }  ///< pixels
    /// Whether the window whose upper left corner is (x, y) shows a face that fills it.
    bool accepts(const RectangleSums& picture, int x, int y) const;

  private:
    struct Rectangle {
        int x, y, width, height;
        float weight;
    };
    struct Feature {
        std::array<Rectangle, 3> rectangles{};
        int count = 0;
    };
    /// Where a child is positive, it is the next node, else minus the number of the leaf.
    struct Node {
        int left, right, feature;
        float threshold;
    };
    struct Tree {
        std::vector<Node> nodes;
        std::vector<float> leaves;
    };
    struct Stage {
        float threshold;
        std::vector<Tree> trees;
    };

    void requireConsistent(const std::filesystem::path& file) const;
    float valueOf(const Tree& tree, const RectangleSums& picture, int x, int y, float contrast) const;

    int width_ = 0, height_ = 0;
    std::vector<Feature> features_;
    std::vector<Stage> stages_;
};

}  // namespace platform
