#include "platform/pixels/TilePainter.h"

#include <algorithm>
#include <atomic>

#include "platform/pixels/TilePaint.h"

namespace platform {

struct TilePainter::Task {
    int pieces;
    const std::function<void(int)>& work;
    std::atomic<int> next{0};

    void help() {
        for (int piece; (piece = next++) < pieces;) work(piece);
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
    share(columns * rows, [&](int tile) {
        const int left = tile % columns * kTileColumns, top = tile / columns * kTileRows;
        const TileArea area{left, top, std::min(left + kTileColumns, canvas.width),
                            std::min(top + kTileRows, canvas.height)};
        paintArea(paints, background, area, canvas);
    });
}

void TilePainter::share(int pieces, const std::function<void(int)>& work) {
    Task task{pieces, work};
    {
        const std::lock_guard lock(mutex_);
        task_ = &task;
        ++tasks_;
    }
    changed_.notify_all();
    task.help();
    std::unique_lock lock(mutex_);
    task_ = nullptr;
    changed_.wait(lock, [this] { return busy_ == 0; });
}

void TilePainter::help() {
    int64_t seen = 0;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] { return ends_ || (task_ && tasks_ != seen); });
        if (ends_) return;
        seen = tasks_;
        Task& task = *task_;
        ++busy_;
        lock.unlock();
        task.help();
        lock.lock();
        if (--busy_ == 0) changed_.notify_all();
    }
}

}  // namespace platform
