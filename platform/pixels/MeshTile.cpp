#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>
#include <type_traits>

#include "platform/pixels/MeshSamples.h"
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/MeshTile.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include "platform/pixels/Blending-inl.h"
#include "platform/pixels/MeshLighting-inl.h"
#include "platform/pixels/MeshRaster-inl.h"

#ifndef MULTISCENE_MESHTILE
#define MULTISCENE_MESHTILE
namespace platform {

// The middle of some of a pixel's samples, from its own.
struct SampleMiddle {
    float x = 0, y = 0;
};
inline constexpr unsigned kAllSamples = (1u << kSamples) - 1;
inline constexpr auto kSampleMiddles = [] {
    std::array<SampleMiddle, kAllSamples + 1> middles{};
    for (unsigned samples = 1; samples <= kAllSamples; ++samples) {
        SampleMiddle& middle = middles[samples];
        for (int s = 0; s < kSamples; ++s)
            if (samples >> s & 1) middle = {middle.x + kSampleX[s], middle.y + kSampleY[s]};
        const auto count = static_cast<float>(std::popcount(samples));
        middle = {middle.x / count, middle.y / count};
    }
    return middles;
}();

}  // namespace platform
#endif

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

constexpr int kBlock = 16;     // pixels of a row that are shaded together when something is blended with them
constexpr int kShortRun = 16;  // pixels: shorter runs of one triangle are shaded among fragments
constexpr uint32_t kMixed = 0xFFFFFFFF;

HWY_INLINE int lanes() { return static_cast<int>(hn::Lanes(Pixels())); }

// --- Shading.

// From the planes' numbers, which at(plane) gives.
template <class At>
HWY_INLINE Surfaces surfacesOf(const At& at) {
    const RealVector w = hn::Div(real(1), at(0));
    const auto number = [&](int plane) { return hn::Mul(at(plane), w); };
    return {{number(1), number(2), number(3)}, {number(4), number(5), number(6)}, number(7), number(8)};
}

// Pixels of a row wholly inside of one triangle.
void shadeRun(const TrianglePlanes& planes, const MeshShader& shader, int row, const Run& run,
              uint32_t* colours) {
    const float down = static_cast<float>(row - planes.top);
    float start[9];
    for (int i = 0; i < 9; ++i) start[i] = planes.first[i] + planes.down[i] * down;
    const int count = run.to - run.from;
    for (int i = 0; i < count; i += lanes()) {
        const RealVector x = columns(run.from - planes.left + i);
        const auto at = [&](int plane) {
            return hn::Add(real(start[plane]), hn::Mul(real(planes.across[plane]), x));
        };
        hn::StoreU(shader.at(surfacesOf(at)), Pixels(), colours + i);
    }
}

// The planes' numbers at the middle of the samples that a fragment has, which lies inside of its triangle.
HWY_INLINE void evaluate(const TrianglePlanes& planes, const Fragment& fragment, float* numbers) {
    const hn::FixedTag<float, 4> four;
    const SampleMiddle& middle = kSampleMiddles[fragment.samples];
    const auto across = hn::Set(four, static_cast<float>(fragment.column - planes.left) + middle.x);
    const auto down = hn::Set(four, static_cast<float>(fragment.row - planes.top) + middle.y);
    for (int i = 0; i < TrianglePlanes::kCount; i += 4) {
        const auto start =
            hn::Add(hn::LoadU(four, planes.first + i), hn::Mul(hn::LoadU(four, planes.down + i), down));
        hn::StoreU(hn::Add(start, hn::Mul(hn::LoadU(four, planes.across + i), across)), four, numbers + i);
    }
}

// Fragments of one mesh, as many as a vector has at a time. `order`: their places in the tile's list.
void shadeFragments(std::span<const uint32_t> order, const MeshShader& shader, MeshSamples& samples,
                    uint32_t* colours) {
    constexpr int kCount = TrianglePlanes::kCount;
    HWY_ALIGN float numbers[HWY_MAX_BYTES / 4 * kCount];
    const auto vector = static_cast<size_t>(lanes());
    for (size_t done = 0; done < order.size(); done += vector) {
        for (size_t i = 0; i < vector; ++i) {
            const Fragment& fragment = samples.fragments[order[std::min(done + i, order.size() - 1)]];
            evaluate(samples.planesOf(fragment.triangle), fragment, numbers + i * kCount);
        }
        const PlaceVector places = hn::Mul(hn::Iota(Places(), 0), hn::Set(Places(), kCount));
        const auto at = [&](int plane) { return hn::GatherIndex(Reals(), numbers + plane, places); };
        hn::StoreU(shader.at(surfacesOf(at)), Pixels(), colours + done);
    }
}

// --- From samples to the canvas.

class Settler {
  public:
    // `isLast`: nothing will be blended with single samples before something else is painted on the canvas.
    Settler(MeshSamples& samples, bool isLast) : samples_(samples), isLast_(isLast) {
        samples.fragments.clear();
    }

    // Pixels of a row of the tile.
    void settle(int row, const Run& run) {
        if (!findNumbers(row, run)) return;
        numbers_[run.to] = ~numbers_[run.to - 1];  // ends the last one
        for (int x = run.from; x < run.to;) {
            const uint32_t number = numbers_[x];
            const int end = number == kMixed ? x + 1 : endOfRun(x + 1, number);
            if (number == kMixed)
                addMixed(row, x);
            else if (number != 0)
                addWhole(number, row, {x, end});
            x = end;
            if (samples_.fragments.size() + kBlock * kSamples > MeshSamples::kMostFragments) finish();
        }
        clear(row, run);
    }

    // Shades what has been gathered.
    void finish() {
        std::vector<Fragment>& fragments = samples_.fragments;
        if (fragments.empty()) return;
        sortByMesh();
        auto& [order, ends, colours, backs, blended] = samples_.scratch;
        colours.resize(fragments.size() + HWY_MAX_BYTES / 4);
        blended.resize(fragments.size());
        for (size_t first = 0; first < order.size();) {
            const PreparedMesh* mesh = meshOf(order[first]);
            size_t end = first + 1;
            while (end < order.size() && meshOf(order[end]) == mesh) ++end;
            const std::span mine(&order[first], end - first);
            shadeFragments(mine, MeshShader(*mesh), samples_, colours.data());
            blend(*mesh, mine);
            first = end;
        }
        compose();
        fragments.clear();
    }

    // Pixels of a row get the mean of their samples.
    void join(int row, const Run& run) {
        if (!samples_.hasSplit) return;
        for (int x = run.from; x < run.to; ++x) {
            uint8_t& isSplit = samples_.isSplit[MeshSamples::pixelAt(row, x)];
            if (isSplit) *canvasAt(row, x) = mean(samples_.splitColours[MeshSamples::pixelAt(row, x)]);
            isSplit = 0;
        }
    }

  private:
    using SampleColours = std::array<uint32_t, kSamples>;

    uint32_t* canvasAt(int row, int column) const {
        uint8_t* line = samples_.canvas.pixels + (samples_.area.top + row) * samples_.canvas.stride;
        return reinterpret_cast<uint32_t*>(line) + samples_.area.left + column;
    }
    const PreparedMesh* meshOf(uint32_t fragment) const {
        return samples_.triangles[samples_.fragments[fragment].triangle].mesh;
    }

    // What each pixel of the run sees; false when nothing is new.
    bool findNumbers(int row, const Run& run) {
        const uint32_t* keys[kSamples];
        for (int s = 0; s < kSamples; ++s) keys[s] = samples_.keysOf(row, s);
        const PixelVector number = hn::Set(Pixels(), MeshSamples::kNumber), zero = hn::Zero(Pixels());
        PixelVector any = zero;
        for (int x = run.from; x < run.to; x += lanes()) {
            const PixelVector first = hn::LoadU(Pixels(), keys[0] + x);
            PixelVector other = zero;
            for (int s = 1; s < kSamples; ++s)
                other = hn::Or(other, hn::Xor(first, hn::LoadU(Pixels(), keys[s] + x)));
            const PixelVector mine = hn::And(first, number);
            const auto isWhole = hn::Eq(hn::And(other, number), zero);
            const PixelVector seen = hn::IfThenElse(isWhole, mine, hn::Set(Pixels(), kMixed));
            hn::StoreU(seen, Pixels(), numbers_ + x);
            any = hn::Or(any, seen);
        }
        return !hn::AllTrue(Pixels(), hn::Eq(any, zero));
    }

    int endOfRun(int x, uint32_t number) const {
        const PixelVector same = hn::Set(Pixels(), number);
        for (;; x += lanes()) {
            const auto other = hn::Ne(hn::LoadU(Pixels(), numbers_ + x), same);
            if (!hn::AllFalse(Pixels(), other))
                return x + static_cast<int>(hn::FindKnownFirstTrue(Pixels(), other));
        }
    }

    void clear(int row, const Run& run) {
        const PixelVector depth = hn::Set(Pixels(), MeshSamples::kFarthest);
        for (int s = 0; s < kSamples; ++s) {
            uint32_t* keys = samples_.keysOf(row, s);
            int x = run.from;
            for (; x + lanes() <= run.to; x += lanes())
                hn::StoreU(hn::And(hn::LoadU(Pixels(), keys + x), depth), Pixels(), keys + x);
            for (; x < run.to; ++x) keys[x] &= MeshSamples::kFarthest;
        }
    }

    void addMixed(int row, int column) {
        const hn::FixedTag<uint32_t, kSamples> four;
        HWY_ALIGN uint32_t numbers[kSamples];
        for (int s = 0; s < kSamples; ++s)
            numbers[s] = samples_.keysOf(row, s)[column] & MeshSamples::kNumber;
        const auto all = hn::Load(four, numbers);
        const auto samplesWith = [&](uint32_t number) {
            uint8_t bits[8] = {};
            hn::StoreMaskBits(four, hn::Eq(all, hn::Set(four, number)), bits);
            return static_cast<unsigned>(bits[0]);
        };
        for (unsigned left = kAllSamples & ~samplesWith(0); left != 0;) {
            const uint32_t number = numbers[std::countr_zero(left)];
            const unsigned mine = samplesWith(number);
            addFragment(number, row, column, mine);
            left &= ~mine;
        }
    }

    void addWhole(uint32_t number, int row, const Run& run) {
        if (run.to - run.from >= kShortRun) return paintRun(number, row, run);
        for (int x = run.from; x < run.to; ++x) addFragment(number, row, x, kAllSamples);
    }

    void addFragment(uint32_t number, int row, int column, unsigned mine) {
        samples_.fragments.push_back({static_cast<uint16_t>(number), static_cast<uint16_t>(column),
                                      static_cast<uint8_t>(row), static_cast<uint8_t>(mine)});
    }

    void paintRun(uint32_t number, int row, const Run& run) {
        const PreparedMesh& mesh = *samples_.triangles[number].mesh;
        join(row, run);
        shadeRun(samples_.planesOf(number), MeshShader(mesh), row, run, runColours_);
        const int count = run.to - run.from;
        if (mesh.hides)
            std::memcpy(canvasAt(row, run.from), runColours_, static_cast<size_t>(count) * 4);
        else
            meet(mesh.paint.blend, runColours_, nullptr, count, canvasAt(row, run.from));
    }

    // Fragments of a mesh one after the other.
    void sortByMesh() {
        const std::vector<Fragment>& fragments = samples_.fragments;
        auto& [order, ends, colours, backs, blended] = samples_.scratch;
        order.resize(fragments.size());
        if (samples_.meshes == 1) return std::iota(order.begin(), order.end(), 0u);
        ends.assign(samples_.meshes + 2, 0);
        const auto meshNumber = [&](const Fragment& fragment) {
            return samples_.triangles[fragment.triangle].meshNumber;
        };
        for (const Fragment& fragment : fragments) ++ends[meshNumber(fragment) + 1];
        for (size_t i = 1; i < ends.size(); ++i) ends[i] += ends[i - 1];
        for (size_t i = 0; i < order.size(); ++i)
            order[ends[meshNumber(fragments[i])]++] = static_cast<uint32_t>(i);
    }

    bool isSplit(const Fragment& fragment) const {
        return samples_.hasSplit && samples_.isSplit[MeshSamples::pixelAt(fragment.row, fragment.column)];
    }
    // What the samples of a fragment's pixel show so far.
    SampleColours coloursAt(const Fragment& fragment) const {
        if (isSplit(fragment))
            return samples_.splitColours[MeshSamples::pixelAt(fragment.row, fragment.column)];
        SampleColours colours;
        colours.fill(*canvasAt(fragment.row, fragment.column));
        return colours;
    }

    // What comes of a mesh's colours at each sample of its fragments.
    void blend(const PreparedMesh& mesh, std::span<const uint32_t> order) {
        auto& [all, ends, colours, backs, blended] = samples_.scratch;
        for (size_t i = 0; i < order.size(); ++i) blended[order[i]].fill(colours[i]);
        if (mesh.hides) return;
        const auto count = static_cast<int>(order.size());
        const bool areSplit =
            std::ranges::any_of(order, [&](uint32_t i) { return isSplit(samples_.fragments[i]); });
        backs.resize(order.size());
        for (size_t s = 0; s < (areSplit ? kSamples : 1); ++s) {
            for (size_t i = 0; i < order.size(); ++i) backs[i] = coloursAt(samples_.fragments[order[i]])[s];
            meet(mesh.paint.blend, colours.data(), nullptr, count, backs.data());
            for (size_t i = 0; i < order.size(); ++i) {
                if (areSplit)
                    blended[order[i]][s] = backs[i];
                else
                    blended[order[i]].fill(backs[i]);
            }
        }
    }

    static uint32_t mean(const SampleColours& colours) {
        constexpr uint32_t kEven = 0x00FF00FF, kHalf = 0x00020002;
        uint32_t even = kHalf, odd = kHalf;
        for (const uint32_t colour : colours) {
            even += colour & kEven;
            odd += colour >> 8 & kEven;
        }
        return (even >> 2 & kEven) | (odd >> 2 & kEven) << 8;
    }

    // The fragments of each pixel together.
    void compose() {
        const std::vector<Fragment>& fragments = samples_.fragments;
        const auto& blended = samples_.scratch.blended;
        for (size_t i = 0; i < fragments.size();) {
            const Fragment first = fragments[i];
            if (first.samples == kAllSamples && !isSplit(first)) {
                *canvasAt(first.row, first.column) = blended[i++][0];
                continue;
            }
            SampleColours colours = coloursAt(first);
            for (;
                 i < fragments.size() && fragments[i].column == first.column && fragments[i].row == first.row;
                 ++i)
                for (size_t s = 0; s < kSamples; ++s)
                    if (fragments[i].samples >> s & 1) colours[s] = blended[i][s];
            show(first, colours);
        }
    }

    void show(const Fragment& at, const SampleColours& colours) {
        const size_t pixel = MeshSamples::pixelAt(at.row, at.column);
        if (isLast_) {
            if (samples_.hasSplit) samples_.isSplit[pixel] = 0;
            *canvasAt(at.row, at.column) = mean(colours);
            return;
        }
        if (!samples_.hasSplit) {
            samples_.hasSplit = true;
            samples_.isSplit.assign(MeshSamples::pixelAt(kTileRows, 0), 0);
            samples_.splitColours.resize(samples_.isSplit.size());
        }
        samples_.isSplit[pixel] = 1;
        samples_.splitColours[pixel] = colours;
    }

    MeshSamples& samples_;
    const bool isLast_;
    uint32_t numbers_[MeshSamples::kStride];
    uint32_t runColours_[MeshSamples::kStride];
};

void settle(const TileArea& part, bool isLast, MeshSamples& samples) {
    const PixelBox& pending = samples.pending;
    const TileArea& area = samples.area;
    const Run columns{std::max(part.left - area.left, pending.left),
                      std::min(part.right - area.left, pending.right)};
    if (columns.isEmpty()) return;
    Settler settler(samples, isLast);
    const int top = std::max(part.top - area.top, pending.top),
              bottom = std::min(part.bottom - area.top, pending.bottom);
    for (int row = top; row < bottom; ++row) settler.settle(row, columns);
    settler.finish();
    for (int row = top; row < bottom && isLast; ++row) settler.join(row, columns);
}

void settleInTile(const TileArea& part, MeshSamples& samples) { settle(part, true, samples); }

// --- From triangles to samples.

// What lies over something that is not on the canvas yet, and does not hide it, waits until that is there.
template <bool kComparesDepth>
bool meetsPending(RowKeys<kComparesDepth>& keys, int row, int block, MeshSamples& samples) {
    const PixelVector number = hn::Set(Pixels(), MeshSamples::kNumber), zero = hn::Zero(Pixels());
    for (int x = block; x < block + kBlock; x += lanes()) {
        keys.lookAt(x);
        for (int s = 0; s < kSamples; ++s) {
            const PixelVector before = hn::LoadU(Pixels(), samples.keysOf(row, s) + x);
            const PixelVector changed = hn::Xor(keys.template seen<false>(s, before), before);
            const PixelVector pending = hn::IfThenElse(hn::Eq(changed, zero), zero, hn::And(before, number));
            if (!hn::AllTrue(Pixels(), hn::Eq(pending, zero))) return true;
        }
    }
    return false;
}

template <bool kComparesDepth>
void addRow(const TileTriangle& triangle, bool hides, int row, const RowBounds& bounds,
            MeshSamples& samples) {
    const Run& run = bounds.touched;
    RowKeys<kComparesDepth> keys(triangle, row, run);
    const auto write = [&]<bool kInside>(std::bool_constant<kInside>, int from, int to) {
        for (int x = from; x < to; x += lanes()) {
            keys.lookAt(x);
            for (int s = 0; s < kSamples; ++s) {
                uint32_t* at = samples.keysOf(row, s) + x;
                hn::StoreU(keys.template seen<kInside>(s, hn::LoadU(Pixels(), at)), Pixels(), at);
            }
        }
    };
    if (hides) {
        const int whole =
            bounds.inside.isEmpty() ? 0 : (bounds.inside.to - bounds.inside.from) / lanes() * lanes();
        if (whole == 0) return write(std::false_type(), run.from, run.to);
        const int to = bounds.inside.from + whole;
        write(std::false_type(), run.from, bounds.inside.from);
        write(std::true_type(), bounds.inside.from, to);
        return write(std::false_type(), to, run.to);
    }
    for (int block = run.from / kBlock * kBlock; block < run.to; block += kBlock) {
        if (meetsPending(keys, row, block, samples)) {
            const TileArea& area = samples.area;
            settle({area.left + block, area.top + row, area.left + block + kBlock, area.top + row + 1}, false,
                   samples);
        }
        write(std::false_type(), block, block + kBlock);
    }
}

void addTriangle(const SeenTriangle& seen, const PreparedMesh& mesh, uint32_t meshNumber,
                 MeshSamples& samples) {
    if (samples.triangles.size() > MeshSamples::kNumber) {
        settle(samples.area, false, samples);
        samples.triangles.resize(1);
        samples.planes.clear();
    }
    const TileTriangle triangle(seen, samples.area, static_cast<uint32_t>(samples.triangles.size()));
    if (triangle.box.isEmpty()) return;
    samples.triangles.push_back({&mesh, &seen, meshNumber, MeshSamples::kNoPlanes});
    samples.include(triangle.box);
    for (int row = triangle.box.top; row < triangle.box.bottom; ++row) {
        const RowBounds bounds = boundsOfRow(triangle, row);
        if (bounds.touched.isEmpty()) continue;
        if (mesh.paint.depthTest)
            addRow<true>(triangle, mesh.hides, row, bounds, samples);
        else
            addRow<false>(triangle, mesh.hides, row, bounds, samples);
    }
}

void addToTile(const PreparedMesh& mesh, MeshSamples& samples) {
    const size_t band = static_cast<size_t>(samples.area.top / kTileRows);
    const uint32_t first = band == 0 ? 0 : mesh.bandEnds[band - 1];
    const uint32_t meshNumber = ++samples.meshes;
    for (uint32_t i = first; i < mesh.bandEnds[band]; ++i)
        addTriangle(mesh.triangles[mesh.bandTriangles[i]], mesh, meshNumber, samples);
}

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

HWY_EXPORT(addToTile);
HWY_EXPORT(settleInTile);

namespace {

using Places = std::array<std::array<double, 3>, 3>;

// From a pixel's column and row, and 1, to the shares of the corners in it, divided by w.
Places sharesOfCorners(const PreparedMesh& mesh, const float* numbers, const Canvas& canvas) {
    std::array<std::array<double, 3>, 3> at{};  // column, row, w of each corner
    const Matrix4& m = mesh.paint.toClip;
    for (size_t i = 0; i < 3; ++i) {
        const float* place = numbers + i * MeshCorners::kNumbers;
        const auto line = [&](size_t k) {
            return double{m[k]} * place[0] + double{m[4 + k]} * place[1] + double{m[8 + k]} * place[2] +
                   m[12 + k];
        };
        const double w = line(3);
        at[i] = {(line(0) + w) * canvas.width / 2, (w - line(1)) * canvas.height / 2, w};
    }
    Places shares{};
    const auto cross = [](const std::array<double, 3>& a, const std::array<double, 3>& b) {
        return std::array{a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
    };
    for (size_t i = 0; i < 3; ++i) shares[i] = cross(at[(i + 1) % 3], at[(i + 2) % 3]);
    const double determinant = at[0][0] * shares[0][0] + at[0][1] * shares[0][1] + at[0][2] * shares[0][2];
    for (auto& share : shares)
        for (double& number : share) number /= determinant;
    return shares;
}

// 1, place in the world, normal, place in the picture.
void cornerNumbers(const MeshPaint& paint, const float* corner, float* numbers) {
    const auto line = [](const Matrix4& m, size_t i, const float* at, float w) {
        return m[i] * at[0] + m[4 + i] * at[1] + m[8 + i] * at[2] + m[12 + i] * w;
    };
    const float picture[3] = {corner[6], corner[7], 0};
    float squared = 0;
    for (size_t i = 0; i < 3; ++i) {
        numbers[1 + i] = line(paint.toWorld, i, corner, 1);
        numbers[4 + i] = line(paint.normalToWorld, i, corner + 3, 0);
        squared += numbers[4 + i] * numbers[4 + i];
    }
    const float part = squared > 0 ? 1 / std::sqrt(squared) : 0;
    for (size_t i = 4; i < 7; ++i) numbers[i] *= part;
    numbers[0] = 1;
    for (size_t i = 0; i < 2; ++i) numbers[7 + i] = line(paint.toPicture, i, picture, 1);
}

TrianglePlanes planesFor(const MeshSamples::Triangle& triangle, const TileArea& area, const Canvas& canvas) {
    const PreparedMesh& mesh = *triangle.mesh;
    const float* numbers = mesh.paint.corners.numbers + triangle.seen->firstCorner * MeshCorners::kNumbers;
    const Places shares = sharesOfCorners(mesh, numbers, canvas);
    const PixelBox& box = triangle.seen->box;
    TrianglePlanes planes{};
    planes.left = std::max(box.left, area.left) - area.left;
    planes.top = std::max(box.top, area.top) - area.top;
    const double x = area.left + planes.left + 0.5, y = area.top + planes.top + 0.5;
    for (size_t i = 0; i < 3; ++i) {
        float corner[TrianglePlanes::kCount] = {};
        cornerNumbers(mesh.paint, numbers + i * MeshCorners::kNumbers, corner);
        const auto first = static_cast<float>(shares[i][0] * x + shares[i][1] * y + shares[i][2]);
        const auto across = static_cast<float>(shares[i][0]), down = static_cast<float>(shares[i][1]);
        for (int k = 0; k < TrianglePlanes::kCount; ++k) {
            planes.first[k] += corner[k] * first;
            planes.across[k] += corner[k] * across;
            planes.down[k] += corner[k] * down;
        }
    }
    return planes;
}

}  // namespace

const TrianglePlanes& MeshSamples::makePlanes(uint32_t number) {
    triangles[number].planes = static_cast<uint32_t>(planes.size());
    return planes.emplace_back(planesFor(triangles[number], area, canvas));
}

void beginSamples(const TileArea& area, const Canvas& canvas, MeshSamples& samples) {
    samples.area = area;
    samples.canvas = canvas;
    samples.keys.resize(static_cast<size_t>(kTileRows * kSamples * MeshSamples::kStride));
    for (int row = 0; row < area.bottom - area.top; ++row)
        for (int sample = 0; sample < kSamples; ++sample)
            std::fill_n(samples.keysOf(row, sample), area.right - area.left + MeshSamples::kBeyond,
                        MeshSamples::kFarthest);
    samples.triangles.assign(1, {});
    samples.planes.clear();
    samples.fragments.reserve(MeshSamples::kMostFragments);
    samples.meshes = 0;
    samples.pending = {};
    samples.hasSplit = false;
}

void addMesh(const PreparedMesh& mesh, MeshSamples& samples) {
    HWY_DYNAMIC_DISPATCH(addToTile)(mesh, samples);
}

void settleSamples(const TileArea& part, MeshSamples& samples) {
    HWY_DYNAMIC_DISPATCH(settleInTile)(part, samples);
}

void forgetPending(MeshSamples& samples) {
    for (uint32_t& key : samples.keys) key &= MeshSamples::kFarthest;
    samples.pending = {};
    samples.hasSplit = false;
}

}  // namespace platform
#endif
