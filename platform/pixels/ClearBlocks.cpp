#include "platform/pixels/ClearBlocks.h"

#include <algorithm>
#include <cstring>

namespace platform {

namespace {

constexpr int kSide = 8;  // texels of a square

bool holdsSomething(const Surface& picture, int column, int row) {
    const int right = std::min((column + 1) * kSide, picture.width);
    const int bottom = std::min((row + 1) * kSide, picture.height);
    for (int y = row * kSide; y < bottom; ++y)
        for (int x = column * kSide; x < right; ++x) {
            uint32_t texel;
            std::memcpy(&texel, picture.pixels + y * picture.stride + ptrdiff_t{x} * 4, 4);
            if (texel != 0) return true;
        }
    return false;
}

}  // namespace

ClearBlocks::ClearBlocks(const Surface& picture)
    : width_(picture.width),
      height_(picture.height),
      columns_((picture.width + kSide - 1) / kSide),
      rows_((picture.height + kSide - 1) / kSide),
      counts_(static_cast<size_t>(columns_ + 1) * static_cast<size_t>(rows_ + 1)) {
    for (int row = 0; row < rows_; ++row) {
        int32_t inRow = 0;
        for (int column = 0; column < columns_; ++column) {
            const bool holds = holdsSomething(picture, column, row);
            isUseful_ = isUseful_ || !holds;
            inRow += holds;
            counts_[static_cast<size_t>((row + 1) * (columns_ + 1) + column + 1)] =
                countUpTo(column + 1, row) + inRow;
        }
    }
}

int ClearBlocks::countUpTo(int column, int row) const {
    return counts_[static_cast<size_t>(row * (columns_ + 1) + column)];
}

bool ClearBlocks::isClear(int left, int top, int right, int bottom) const {
    const int from = std::clamp(left, 0, width_ - 1) / kSide,
              to = std::clamp(right, 0, width_ - 1) / kSide + 1;
    const int upper = std::clamp(top, 0, height_ - 1) / kSide,
              lower = std::clamp(bottom, 0, height_ - 1) / kSide + 1;
    return countUpTo(to, lower) - countUpTo(from, lower) - countUpTo(to, upper) + countUpTo(from, upper) == 0;
}

}  // namespace platform
