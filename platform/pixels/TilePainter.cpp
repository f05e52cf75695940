#include "platform/pixels/TilePainter.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>

#include "platform/pixels/MeshSamples.h"
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
    const auto bytes = static_cast<size_t>(area.right - area.left) * 4;
    for (int row = area.top; row < area.bottom; ++row) {
        auto* pixels = reinterpret_cast<uint32_t*>(canvas.pixels + row * canvas.stride) + area.left;
        if (colour == 0)
            std::memset(pixels, 0, bytes);
        else
            std::fill_n(pixels, bytes / 4, colour);
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

/// The first shape to be painted: it hides all that lies under it in the area. Their number where none does.
size_t firstShown(std::span<const PreparedPaint> paints, const TileArea& area) {
    size_t first = paints.size();
    while (first > 0 && !(paints[first - 1].hides && covers(paints[first - 1], area))) --first;
    return first > 0 ? first - 1 : paints.size();
}

void paintShapes(std::span<const PreparedPaint> paints, size_t first, const TileArea& area,
                 const Canvas& canvas, const std::function<void(size_t)>& before) {
    const std::span shown = paints.subspan(first);
    const std::vector<HiddenRows> hidden = rowsHiddenBelow(shown, area);
    for (size_t i = 0; i < shown.size(); ++i) {
        before(first + i);
        if (touches(shown[i], area)) paintTile(shown[i], area, hidden[i], canvas);
    }
}

bool touches(const PreparedMesh& mesh, const TileArea& area) {
    const auto band = static_cast<size_t>(area.top / kTileRows);
    return mesh.bandEnds[band] > (band == 0 ? 0 : mesh.bandEnds[band - 1]);
}

TileArea boundsIn(const PreparedPaint& paint, const TileArea& area) {
    return {std::max(area.left, paint.left), std::max(area.top, paint.top), std::min(area.right, paint.right),
            std::min(area.bottom, paint.bottom)};
}

/// Meshes between the shapes of a tile.
class MeshesOfTile {
  public:
    MeshesOfTile(std::span<const PreparedMesh> meshes, const TileArea& area, const Canvas& canvas,
                 MeshSamples& samples)
        : meshes_(meshes), area_(area), samples_(samples) {
        beginSamples(area, canvas, samples);
    }

    /// Those under the first shape of all that shows leave depths alone.
    void hide(size_t shapes) {
        addBelow(shapes);
        forgetPending(samples_);
    }
    void paintBelow(size_t shapes, const TileArea& part) {
        addBelow(shapes);
        settleSamples(part, samples_);
    }

  private:
    void addBelow(size_t shapes) {
        for (; next_ < meshes_.size() && meshes_[next_].shapesBelow <= shapes; ++next_)
            if (touches(meshes_[next_], area_)) addMesh(meshes_[next_], samples_);
    }

    const std::span<const PreparedMesh> meshes_;
    const TileArea& area_;
    MeshSamples& samples_;
    size_t next_ = 0;
};

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

void TilePainter::paint(std::span<const PreparedPaint> paints, std::span<const PreparedMesh> meshes,
                        uint32_t background, const Canvas& canvas) {
    shareTiles(canvas.width, canvas.height, [&](const TileArea& area) {
        size_t first = firstShown(paints, area);
        const bool showsGround = first == paints.size();
        if (showsGround) {
            fill(area, background, canvas);
            first = 0;
        }
        if (std::ranges::none_of(meshes, [&](const PreparedMesh& mesh) { return touches(mesh, area); }))
            return paintShapes(paints, first, area, canvas, [](size_t) {});
        auto samples = takeSamples();
        MeshesOfTile between(meshes, area, canvas, *samples);
        if (!showsGround) between.hide(first);
        paintShapes(paints, first, area, canvas, [&](size_t shape) {
            if (touches(paints[shape], area)) between.paintBelow(shape, boundsIn(paints[shape], area));
        });
        between.paintBelow(paints.size(), area);
        giveBack(std::move(samples));
    });
}

std::unique_ptr<MeshSamples> TilePainter::takeSamples() {
    const std::lock_guard lock(mutex_);
    if (samples_.empty()) return std::make_unique<MeshSamples>();
    auto samples = std::move(samples_.back());
    samples_.pop_back();
    return samples;
}

void TilePainter::giveBack(std::unique_ptr<MeshSamples> samples) {
    const std::lock_guard lock(mutex_);
    samples_.push_back(std::move(samples));
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
