#include "platform/pixels/TilePainter.h"

#include <algorithm>
#include <atomic>

#include "platform/pixels/TilePaint.h"

namespace platform {

struct TilePainter::Picture {
    std::span<const PreparedPaint> paints;
    uint32_t background;
    const Canvas& canvas;
    int columns, tiles;
    std::atomic<int> next{0};

    TileArea area(int tile) const {
        const int left = tile % columns * kTileColumns, top = tile / columns * kTileRows;
        return {left, top, std::min(left + kTileColumns, canvas.width),
                std::min(top + kTileRows, canvas.height)};
    }
};

namespace {

bool touches(const PreparedPaint& paint, const TileArea& area) {
    return paint.left < area.right && paint.right > area.left && paint.top < area.bottom &&
           paint.bottom > area.top;
}

void fill(const TileArea& area, uint32_t colour, const Canvas& canvas) {
    for (int row = area.top; row < area.bottom; ++row) {
        auto* pixels = reinterpret_cast<uint32_t*>(canvas.pixels + row * canvas.stride);
        std::fill(pixels + area.left, pixels + area.right, colour);
    }
}

void paintArea(std::span<const PreparedPaint> paints, uint32_t background, const TileArea& area,
               const Canvas& canvas) {
    size_t first = paints.size();
    while (first > 0 && !(paints[first - 1].hides && covers(paints[first - 1], area))) --first;
    if (first == 0)
        fill(area, background, canvas);
    else
        --first;
    for (const PreparedPaint& paint : paints.subspan(first))
        if (touches(paint, area)) paintTile(paint, area, canvas);
}

}  // namespace

TilePainter::TilePainter(int threads) {
    for (int i = 1; i < threads; ++i) helpers_.emplace_back([this] { help(); });
}

TilePainter::~TilePainter() {
    {
        const std::lock_guard lock(mutex_);
        ends_ = true;
    }
    changed_.notify_all();
    for (std::thread& helper : helpers_) helper.join();
}

void TilePainter::paint(std::span<const PreparedPaint> paints, uint32_t background, const Canvas& canvas) {
    const int columns = (canvas.width + kTileColumns - 1) / kTileColumns;
    const int rows = (canvas.height + kTileRows - 1) / kTileRows;
    Picture picture{paints, background, canvas, columns, columns * rows};
    {
        const std::lock_guard lock(mutex_);
        picture_ = &picture;
        ++pictures_;
    }
    changed_.notify_all();
    paintTiles(picture);
    std::unique_lock lock(mutex_);
    picture_ = nullptr;
    changed_.wait(lock, [this] { return busy_ == 0; });
}

void TilePainter::help() {
    int64_t seen = 0;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return ends_ || (picture_ && pictures_ != seen); });
        if (ends_) return;
        seen = pictures_;
        Picture& picture = *picture_;
        ++busy_;
        lock.unlock();
        paintTiles(picture);
        lock.lock();
        if (--busy_ == 0) changed_.notify_all();
    }
}

void TilePainter::paintTiles(Picture& picture) {
    for (int tile; (tile = picture.next++) < picture.tiles;)
        paintArea(picture.paints, picture.background, picture.area(tile), picture.canvas);
}

}  // namespace platform
