#include "platform/pixels/TilePainter.h"

#include <algorithm>
#include <atomic>
#include <cmath>

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

/// For each shape, the longest run of every row that shapes over it hide.
std::vector<HiddenRows> rowsHiddenBelow(std::span<const PreparedPaint> paints, const TileArea& area) {
    std::vector<HiddenRows> below(paints.size());
    HiddenRows longest{};
    for (size_t i = paints.size(); i-- > 0;) {
        below[i] = longest;
        const PreparedPaint& paint = paints[i];
        if (!paint.hides || !touches(paint, area)) continue;
        const int bottom = std::min(area.bottom, paint.bottom);
        for (int row = std::max(area.top, paint.top); row < bottom; ++row) {
            const Run inside = rowBounds(paint, row, {area.left, area.right}).inside;
            Run& known = longest[static_cast<size_t>(row - area.top)];
            if (inside.to - inside.from > known.to - known.from) known = inside;
        }
    }
    return below;
}

void paintArea(std::span<const PreparedPaint> paints, uint32_t background, const TileArea& area,
               const Canvas& canvas) {
    size_t first = paints.size();
    while (first > 0 && !(paints[first - 1].hides && covers(paints[first - 1], area))) --first;
    if (first == 0)
        fill(area, background, canvas);
    else
        --first;
    const std::span shown = paints.subspan(first);
    const std::vector<HiddenRows> hidden = rowsHiddenBelow(shown, area);
    for (size_t i = 0; i < shown.size(); ++i)
        if (touches(shown[i], area)) paintTile(shown[i], area, hidden[i], canvas);
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

void TilePainter::shareTiles(int width, int height, const std::function<void(const TileArea&)>& work) {
    const int columns = (width + kTileColumns - 1) / kTileColumns;
    const int rows = (height + kTileRows - 1) / kTileRows;
    share(columns * rows, [&](int tile) {
        const int left = tile % columns * kTileColumns, top = tile / columns * kTileRows;
        work({left, top, std::min(left + kTileColumns, width), std::min(top + kTileRows, height)});
    });
}

void TilePainter::paint(std::span<const PreparedPaint> paints, uint32_t background, const Canvas& canvas) {
    shareTiles(canvas.width, canvas.height,
               [&](const TileArea& area) { paintArea(paints, background, area, canvas); });
}

bool TilePainter::canBeSampled(const PreparedPaint& paint) {
    if (!paint.picture.surface.pixels ||
        (paint.filter && (paint.filter->type >= 4 || paint.filter->reflection)))
        return false;
    // Places on the quad are looked up the way that its picture is.
    if (paint.perspective && (paint.mask || paint.gradient || paint.filter)) return false;
    const PlaceMatrix& m = paint.picture.toTexel;
    const bool isStraight = !paint.perspective && m[0] == 1 && m[1] == 0 && m[3] == 0 && m[4] == 1;
    return !isStraight || m[2] - 0.5 != std::floor(m[2]) || m[5] - 0.5 != std::floor(m[5]);
}

void TilePainter::sample(const PreparedPaint& paint, int width, int height, const Canvas& samples) {
    shareTiles(width, height, [&](const TileArea& area) {
        if (touches(paint, area)) sampleTile(paint, area, samples);
    });
}

PreparedPaint TilePainter::withSamples(const PreparedPaint& paint, const Surface& samples) {
    PreparedPaint result = paint;
    result.picture.surface = samples;
    result.perspective = false;
    result.picture.wrap = Wrap::Clamp;
    result.picture.toTexel = {1, 0, 0.5 - paint.left, 0, 1, 0.5 - paint.top, 0, 0, 1};
    return result;
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
