#include "platform/pixels/Blur.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/pixels/TilePainter.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/Blur.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include "platform/pixels/PixelVectors-inl.h"

#ifndef MULTISCENE_BLUR
#define MULTISCENE_BLUR
namespace platform {

// A texel beside the one that is blurred, as an offset in the padded copy, and its part of 65536.
struct WeighedTexel {
    ptrdiff_t offset;
    uint16_t weight;
};

// Pixels of a row, each with room for all texels around it; to be read a vector beyond the last.
struct BlurredRow {
    const uint32_t* texels;
    uint32_t* pixels;
    int count;
};

}  // namespace platform
#endif

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void blurRow(const std::vector<WeighedTexel>& around, const BlurredRow& row) {
    const int lanes = static_cast<int>(hn::Lanes(Pixels()));
    const WordVector upper = hn::Set(Words(), 0xFF00);
    // Half a step of the result, and half of what cutting off takes in the mean.
    const WordVector half = hn::Set(Words(), static_cast<uint16_t>(128 + around.size() / 2));
    HWY_ALIGN uint32_t rest[HWY_MAX_BYTES / 4];
    for (int i = 0; i < row.count; i += lanes) {
        WordVector even = half, odd = half;
        for (const auto& [offset, weight] : around) {
            const WordVector texels = hn::BitCast(Words(), hn::LoadU(Pixels(), row.texels + i + offset));
            const WordVector part = hn::Set(Words(), weight);
            even = hn::Add(even, hn::MulHigh(hn::ShiftLeft<8>(texels), part));
            odd = hn::Add(odd, hn::MulHigh(hn::And(texels, upper), part));
        }
        const PixelVector blurred =
            hn::BitCast(Pixels(), hn::Or(hn::ShiftRight<8>(even), hn::And(odd, upper)));
        if (row.count - i >= lanes) {
            hn::StoreU(blurred, Pixels(), row.pixels + i);
            continue;
        }
        hn::Store(blurred, Pixels(), rest);
        std::memcpy(row.pixels + i, rest, static_cast<size_t>(row.count - i) * 4);
    }
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

namespace {

HWY_EXPORT(blurRow);

// Two neighbouring taps in one place between them.
struct TapPair {
    double weight, offset;  // of the whole, in steps
};

constexpr int kRadius = 8;
constexpr double kSigma = 16;

double bell(int tap) { return std::exp(-double(tap) * tap / (2 * kSigma * kSigma)); }

std::array<TapPair, kRadius / 2> tapPairs() {
    double sum = 1;
    for (int tap = 1; tap <= kRadius; ++tap) sum += 2 * bell(tap);
    std::array<TapPair, kRadius / 2> pairs;
    for (int tap = 1; tap < kRadius; tap += 2) {
        const double near = bell(tap), far = bell(tap + 1);
        pairs[static_cast<size_t>(tap / 2)] = {(near + far) / sum, tap + far / (near + far)};
    }
    return pairs;
}

// A picture with its rim drawn out to all sides, so that nothing has to be asked at the rim.
class Padded {
  public:
    Padded(const Surface& picture, int columns, int rows)
        : columns_(columns),
          rows_(rows),
          stride_(picture.width + 2 * columns + kLongestVector),
          texels_(static_cast<size_t>(stride_) * static_cast<size_t>(picture.height + 2 * rows)) {
        for (int row = -rows; row < picture.height + rows; ++row) {
            const auto* from = reinterpret_cast<const uint32_t*>(
                picture.pixels + std::clamp(row, 0, picture.height - 1) * picture.stride);
            uint32_t* to = &texels_[static_cast<size_t>(row + rows) * static_cast<size_t>(stride_)];
            std::fill_n(to, columns, from[0]);
            std::copy_n(from, picture.width, to + columns);
            std::fill_n(to + columns + picture.width, columns, from[picture.width - 1]);
        }
    }

    const uint32_t* row(int row) const { return texels_.data() + offset(columns_, row + rows_); }
    ptrdiff_t offset(int columns, int rows) const { return rows * ptrdiff_t{stride_} + columns; }

  private:
    static constexpr int kLongestVector = 64;  // texels, on any processor

    int columns_, rows_, stride_;
    std::vector<uint32_t> texels_;
};

class Kernel {
  public:
    Kernel(const Surface& picture, double xStep, double yStep)
        : width_(picture.width), height_(picture.height) {
        for (const auto& [weight, offset] : tapPairs())
            for (const double way : {offset, -offset}) addTap(way * xStep, way * yStep, weight);
        int others = 0;
        for (const Part& part : parts_) others += part.weight;
        parts_.push_back({0, 0, 65536 - others});
    }

    int columns() const { return farthest(&Part::column); }
    int rows() const { return farthest(&Part::row); }

    std::vector<WeighedTexel> around(const Padded& padded) const {
        std::vector<WeighedTexel> result;
        for (const Part& part : parts_)
            result.push_back({padded.offset(part.column, part.row), static_cast<uint16_t>(part.weight)});
        return result;
    }

  private:
    struct Part {
        int column, row, weight;
    };

    // A place between four texels.
    void addTap(double x, double y, double weight) {
        const double left = std::floor(x), upper = std::floor(y), across = x - left, down = y - upper;
        for (const int right : {0, 1})
            for (const int lower : {0, 1}) {
                const double part = (right ? across : 1 - across) * (lower ? down : 1 - down);
                const auto rounded = static_cast<int>(std::lround(part * weight * 65536));
                if (rounded == 0) continue;
                parts_.push_back({bounded(left + right, width_), bounded(upper + lower, height_), rounded});
            }
    }

    // Beyond the rim all is the same.
    static int bounded(double place, int size) {
        return static_cast<int>(std::clamp(place, -double(size), double(size)));
    }

    int farthest(int Part::*place) const {
        int result = 0;
        for (const Part& part : parts_) result = std::max(result, std::abs(part.*place));
        return result;
    }

    int width_, height_;
    std::vector<Part> parts_;
};

}  // namespace

void blurAlongDiagonal(const Surface& picture, double pictureWidth, double pictureHeight,
                       TilePainter& painter, const Canvas& canvas) {
    const Kernel kernel(picture, 2 / pictureWidth * picture.width, 2 / pictureHeight * picture.height);
    const Padded padded(picture, kernel.columns(), kernel.rows());
    const std::vector<WeighedTexel> around = kernel.around(padded);
    constexpr int kRows = 16;
    painter.share((canvas.height + kRows - 1) / kRows, [&](int piece) {
        const int bottom = std::min(piece * kRows + kRows, canvas.height);
        for (int row = piece * kRows; row < bottom; ++row) {
            auto* pixels = reinterpret_cast<uint32_t*>(canvas.pixels + row * canvas.stride);
            HWY_DYNAMIC_DISPATCH(blurRow)(around, {padded.row(row), pixels, canvas.width});
        }
    });
}

}  // namespace platform
#endif
