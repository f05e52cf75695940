#include "platform/pixels/Convolution.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "platform/pixels/TilePainter.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/Convolution.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include "platform/pixels/PixelVectors-inl.h"

#ifndef MULTISCENE_CONVOLUTION
#define MULTISCENE_CONVOLUTION
namespace platform {

// As an offset in the padded copy.
struct WeighedTexel {
    ptrdiff_t offset;
    uint16_t weight;
};

// Pixels of a row, each with room for all texels around it; to be read a vector beyond the last.
struct WeighedRow {
    const uint32_t* texels;
    uint32_t* pixels;
    int count;
};

}  // namespace platform
#endif

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void weighRow(const std::vector<WeighedTexel>& around, const WeighedRow& row) {
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
        const PixelVector sum = hn::BitCast(Pixels(), hn::Or(hn::ShiftRight<8>(even), hn::And(odd, upper)));
        if (row.count - i >= lanes) {
            hn::StoreU(sum, Pixels(), row.pixels + i);
            continue;
        }
        hn::Store(sum, Pixels(), rest);
        std::memcpy(row.pixels + i, rest, static_cast<size_t>(row.count - i) * 4);
    }
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

namespace {

HWY_EXPORT(weighRow);

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

}  // namespace

void convolve(const Surface& picture, std::span<const WeighedNeighbour> neighbours, TilePainter& painter,
              const Canvas& canvas) {
    int columns = 0, rows = 0;
    for (const WeighedNeighbour& each : neighbours) {
        columns = std::max(columns, std::abs(each.column));
        rows = std::max(rows, std::abs(each.row));
    }
    const Padded padded(picture, columns, rows);
    std::vector<WeighedTexel> around;
    for (const WeighedNeighbour& each : neighbours)
        around.push_back({padded.offset(each.column, each.row), static_cast<uint16_t>(each.weight)});
    constexpr int kRows = 16;
    painter.share((canvas.height + kRows - 1) / kRows, [&](int piece) {
        const int bottom = std::min(piece * kRows + kRows, canvas.height);
        for (int row = piece * kRows; row < bottom; ++row) {
            auto* pixels = reinterpret_cast<uint32_t*>(canvas.pixels + row * canvas.stride);
            HWY_DYNAMIC_DISPATCH(weighRow)(around, {padded.row(row), pixels, canvas.width});
        }
    });
}

}  // namespace platform
#endif
