// Paints a whole picture from shapes, tile by tile, on several cores.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <thread>
#include <vector>

#include "platform/pixels/MeshPaint.h"
#include "platform/pixels/QuadPaint.h"

namespace platform {

struct MeshSamples;
struct TileArea;

/// Owns the threads that help. Which of them paints which tile does not show in the picture. Used by one
/// thread at a time.
class TilePainter {
  public:
    /// `threads` paint, the caller's among them.
    explicit TilePainter(int threads);
    ~TilePainter();
    TilePainter(const TilePainter&) = delete;
    TilePainter& operator=(const TilePainter&) = delete;

    /// Fills the canvas with `background` (0xAARRGGBB, colours multiplied by alpha) and paints the shapes on
    /// it, the first one farthest back. Where a shape hides all that lies under it in a tile, painting starts
    /// there. Returns when all is done.
    void paint(std::span<const PreparedPaint> paints, uint32_t background, const Canvas& canvas) {
        paint(paints, {}, background, canvas);
    }
    /// With meshes between the shapes, in their order. Depths are those of this picture.
    void paint(std::span<const PreparedPaint> paints, std::span<const PreparedMesh> meshes,
               uint32_t background, const Canvas& canvas);

    /// Looks up what a shape shows of its picture on a canvas of this size, for what is painted again and
    /// again. `samples` has the size of the shape's bounds. Only for shapes of which canBeSampled() holds.
    void sample(const PreparedPaint& paint, int width, int height, const Canvas& samples);
    /// The same shape, which copies its samples and so paints the very same pixels.
    static PreparedPaint withSamples(const PreparedPaint& paint, const Surface& samples);
    /// Sampling the picture is work that can be done once: it is not copied, and no filter moves its places.
    static bool canBeSampled(const PreparedPaint& paint);

    /// Calls work(0) to work(pieces - 1) on the threads, in any order, and returns when all is done. `work`
    /// may not throw.
    void share(int pieces, const std::function<void(int)>& work);

  private:
    struct Task;
    void help();
    std::unique_ptr<MeshSamples> takeSamples();
    void giveBack(std::unique_ptr<MeshSamples> samples);
    void shareTiles(int width, int height, const std::function<void(const TileArea&)>& work);

    std::mutex mutex_;
    std::condition_variable changed_;
    Task* task_ = nullptr;  ///< what is being done
    int64_t tasks_ = 0;     ///< so far
    int busy_ = 0;
    bool ends_ = false;
    std::vector<std::thread> helpers_;
    std::vector<std::unique_ptr<MeshSamples>> samples_;  ///< that no thread uses
};

}  // namespace platform
