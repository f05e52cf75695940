// What the inner loops over pixels cost, one thread, in pixels a nanosecond.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "platform/pixels/Blur.h"
#include "platform/pixels/FromYuv.h"
#include "platform/pixels/SharedEdges.h"
#include "platform/pixels/TilePainter.h"
#include "platform/pixels/ToI420.h"

namespace {

using namespace platform;

constexpr int kWidth = 720, kHeight = 1280;

PixelBuffer picture(int width, int height, bool opaque) {
    PixelBuffer buffer(width, height);
    for (size_t i = 0; i < buffer.size(); i += 4) {
        const size_t alpha = opaque ? 255 : i / 4 * 37 % 256;
        for (size_t c = 0; c < 3; ++c)
            buffer.data()[i + c] = static_cast<uint8_t>(i * (13 + c) / 4 % 256 * alpha / 255);
        buffer.data()[i + 3] = static_cast<uint8_t>(alpha);
    }
    return buffer;
}

QuadPaint centred(const PixelBuffer& buffer, bool opaque, double width, double height, double degrees,
                  double lean) {
    QuadPaint paint;
    paint.picture = {buffer.data(), buffer.stride(), buffer.width(), buffer.height(), opaque};
    const double angle = degrees * std::numbers::pi / 180, c = std::cos(angle), s = std::sin(angle);
    for (size_t i = 0; i < 4; ++i) {
        const bool right = i == 1 || i == 2, lower = i >= 2;
        const double x = right ? width / 2 : -width / 2, y = lower ? height / 2 : -height / 2;
        const double w = 1 + lean * x;
        paint.corners[i] = {(kWidth / 2.0 + c * x - s * y) * w, (kHeight / 2.0 + s * x + c * y) * w, w,
                            right ? 1.0 : 0.0, lower ? 1.0 : 0.0};
    }
    return paint;
}

void countPixels(benchmark::State& state) {
    state.counters["pixels/ns"] =
        benchmark::Counter(1e-9 * kWidth * kHeight, benchmark::Counter::kIsIterationInvariantRate);
}

struct View {
    int width, height;  // of the picture
    double degrees, lean;
    double shownWidth, shownHeight;
};

constexpr View kCopy{kWidth, kHeight, 0, 0, kWidth, kHeight}, kScaled{900, 1600, 0, 0, kWidth, kHeight},
    kTurned{900, 1600, 30, 0, 1600, 1600}, kDeep{900, 1600, 30, 0.0003, 1600, 1600};

void paintQuad(benchmark::State& state, const QuadPaint& paint) {
    PixelBuffer target(kWidth, kHeight);
    const Canvas canvas{target.data(), target.stride(), kWidth, kHeight};
    std::vector<PreparedPaint> paints(1);
    preparePaint(paint, kWidth, kHeight, paints[0]);
    TilePainter painter(1);
    for (auto _ : state) painter.paint(paints, 0xFF285078, canvas);
    countPixels(state);
}

void paintPicture(benchmark::State& state, const View& view, bool opaque) {
    const PixelBuffer source = picture(view.width, view.height, opaque);
    paintQuad(state, centred(source, opaque, view.shownWidth, view.shownHeight, view.degrees, view.lean));
}

// A picture at its own size with one treatment.
void paintTreated(benchmark::State& state, bool opaque, void (*treat)(QuadPaint&, const Surface& mask)) {
    const PixelBuffer source = picture(kWidth, kHeight, opaque), mask = picture(900, 1600, true);
    QuadPaint paint = centred(source, opaque, kWidth, kHeight, 0, 0);
    treat(paint, {mask.data(), mask.stride(), mask.width(), mask.height(), true});
    paintQuad(state, paint);
}

void addMask(QuadPaint& paint, const Surface& mask) {
    paint.mask = MaskPaint{.picture = mask};
    for (size_t i = 0; i < 4; ++i) paint.mask->at[i] = {paint.corners[i].u, paint.corners[i].v};
}
void addOwnMask(QuadPaint& paint, const Surface&) { addMask(paint, paint.picture); }
void addGradient(QuadPaint& paint, const Surface&) {
    paint.gradient = GradientPaint{0.1, 0.2, 0.9, 1, true, true};
}
void addKey(QuadPaint& paint, const Surface&) { paint.key = KeyPaint{{0, 0.7f, 0.2f, 1}, 0.3f}; }
void addTint(QuadPaint& paint, const Surface&) { paint.tint = {1, 0.5f, 0.2f, 0.8f}; }
void addOpacity(QuadPaint& paint, const Surface&) { paint.opacity = 0.6f; }
void addStraight(QuadPaint& paint, const Surface&) { paint.premultiplied = false; }
void addGrey(QuadPaint& paint, const Surface&) { paint.filter = FilterPaint{.type = 1}; }
void addMosaic(QuadPaint& paint, const Surface&) {
    paint.filter = FilterPaint{
        .type = 4, .pixelSize = 20, .borderWidth = 0.02f, .pictureWidth = kWidth, .pictureHeight = kHeight};
}
void addWave(QuadPaint& paint, const Surface&) { paint.filter = FilterPaint{.type = 5, .time = 0.3f}; }
void addScreen(QuadPaint& paint, const Surface&) {
    paint.blend = {BlendFactor::One, BlendFactor::OneMinusSrcColor};
}
void addMultiply(QuadPaint& paint, const Surface&) {
    paint.blend = {BlendFactor::DstColor, BlendFactor::OneMinusSrcAlpha};
}
void addLight(QuadPaint& paint, const Surface&) { paint.blend.destination = BlendFactor::One; }
void addColour(QuadPaint& paint, const Surface&) {
    paint.picture = {};
    paint.tint = {1, 0.5f, 0.2f, 0.8f};
}

// Small quads in rows, as the letters of a text, `pace` pixels apart.
std::vector<QuadPaint> letters(const PixelBuffer& source, double width, double height, double pace,
                               int count) {
    std::vector<QuadPaint> paints;
    for (int i = 0; i < count; ++i) {
        QuadPaint paint = centred(source, false, width, height, 0, 0);
        for (PaintCorner& corner : paint.corners) {
            corner.x += i % 25 * pace - 300.3;
            corner.y += i / 25 * 40 - 400.6;
        }
        paint.tint = {1, 0.9f, 0.8f, 1};
        paints.push_back(paint);
    }
    return paints;
}

// The time of 500 letters over that of none is theirs.
void paintLetters(benchmark::State& state) {
    const PixelBuffer source = picture(24, 32, false);
    PixelBuffer target(kWidth, kHeight);
    std::vector<PreparedPaint> paints(static_cast<size_t>(state.range(0)));
    TilePainter painter(1);
    const std::vector<QuadPaint> quads = letters(source, 24, 32, 25, static_cast<int>(state.range(0)));
    for (auto _ : state) {
        for (size_t i = 0; i < quads.size(); ++i) preparePaint(quads[i], kWidth, kHeight, paints[i]);
        painter.paint(paints, 0xFF285078, {target.data(), target.stride(), kWidth, kHeight});
    }
}

void sharedEdges(benchmark::State& state) {
    const PixelBuffer source = picture(24, 32, false);
    std::vector<QuadPaint> paints = letters(source, 24, 40, 24, static_cast<int>(state.range(0)));
    for (auto _ : state) shareEdges(paints);
}

// A ball of triangles as high as the canvas is wide, in four lights; eight numbers a corner.
std::vector<float> ball(int triangles) {
    const int rings = static_cast<int>(std::sqrt(triangles / 4.0)), sectors = 2 * rings;
    std::vector<float> numbers;
    const auto add = [&](int ring, int sector) {
        const double down = std::numbers::pi * ring / rings, round = 2 * std::numbers::pi * sector / sectors;
        const double at[3] = {std::sin(down) * std::cos(round), std::cos(down),
                              std::sin(down) * std::sin(round)};
        for (int part = 0; part < 2; ++part)  // the place is the normal, too
            for (const double number : at) numbers.push_back(static_cast<float>(number));
        numbers.push_back(static_cast<float>(sector) / static_cast<float>(sectors));
        numbers.push_back(static_cast<float>(ring) / static_cast<float>(rings));
    };
    for (int ring = 0; ring < rings; ++ring)
        for (int sector = 0; sector < sectors; ++sector)
            for (const auto& [below, beside] : {std::pair{0, 0}, {0, 1}, {1, 1}, {0, 0}, {1, 1}, {1, 0}})
                add(ring + below, sector + beside);
    return numbers;
}

MeshPaint litBall(const std::vector<float>& corners, const PixelBuffer& source) {
    MeshPaint paint;
    paint.corners = {corners.data(), corners.size() / MeshCorners::kNumbers};
    paint.facing = MeshFacing::Front;
    paint.toClip = {2.8f, 0, 0, 0, 0, 1.6f, 0, 0, 0, 0, -1.1f, -1, 0, 0, 2.2f, 3};
    paint.picture = {source.data(), source.stride(), source.width(), source.height(), true};
    paint.depthTest = true;
    paint.eye = {0, 0, 3};
    const Vector3 soft{0.1f, 0.1f, 0.16f}, bright{0.9f, 0.5f, 0.5f}, shiny{0.4f, 0.3f, 0.3f};
    paint.lights = {
        {.kind = MeshLightKind::Directional, .place = {0.2f, 0.8f, 1}, .ambient = soft, .diffuse = soft},
        {.kind = MeshLightKind::Point,
         .place = {2, 2, 2},
         .diffuse = bright,
         .specular = shiny,
         .shininess = 24}};
    for (const float side : {-1.0f, 1.0f})
        paint.lights.push_back({.kind = MeshLightKind::Spot,
                                .place = {2 * side, 1, 2},
                                .diffuse = bright,
                                .specular = shiny,
                                .shininess = 24,
                                .coneDirection = {-side, -0.5f, -1},
                                .coneExponent = 5,
                                .coneCosine = 0.5f});
    return paint;
}

void meshOfTriangles(benchmark::State& state) {
    const PixelBuffer source = picture(512, 512, true);
    const std::vector<float> corners = ball(static_cast<int>(state.range(0)));
    const MeshPaint paint = litBall(corners, source);
    PixelBuffer target(kWidth, kHeight);
    std::vector<PreparedMesh> meshes(1);
    TilePainter painter(1);
    for (auto _ : state) {
        prepareMesh(paint, kWidth, kHeight, meshes[0]);
        painter.paint({}, meshes, 0xFF285078, {target.data(), target.stride(), kWidth, kHeight});
    }
    state.counters["triangles"] = static_cast<double>(paint.corners.count / 3);
}

void blurredPicture(benchmark::State& state) {
    const PixelBuffer source = picture(kWidth, kHeight, true);
    PixelBuffer target(kWidth, kHeight);
    const Surface surface{source.data(), source.stride(), kWidth, kHeight, true};
    TilePainter painter(1);
    for (auto _ : state)
        blurAlongDiagonal(surface, kWidth, kHeight, painter,
                          {target.data(), target.stride(), kWidth, kHeight});
    countPixels(state);
}

void encoderPlanes(benchmark::State& state) {
    const PixelBuffer source = picture(kWidth, kHeight, true);
    std::vector<uint8_t> y(kWidth * kHeight), u(y.size() / 4), v(u.size());
    const I420Planes planes{y.data(), kWidth, u.data(), kWidth / 2, v.data(), kWidth / 2};
    for (auto _ : state) toI420(source, YuvMatrix::BT709, planes);
    countPixels(state);
}

void decodedPicture(benchmark::State& state) {
    const std::vector<uint8_t> y(kWidth * kHeight, 100), colour(y.size() / 4, 90);
    YuvPicture source;
    source.planes = {y.data(), colour.data(), colour.data()};
    source.strides = {kWidth, kWidth / 2, kWidth / 2};
    source.width = kWidth;
    source.height = kHeight;
    PixelBuffer target;
    for (auto _ : state) yuvToPixels(source, target);
    countPixels(state);
}

BENCHMARK_CAPTURE(paintPicture, copied, kCopy, true);
BENCHMARK_CAPTURE(paintPicture, copied_blended, kCopy, false);
BENCHMARK_CAPTURE(paintPicture, scaled, kScaled, true);
BENCHMARK_CAPTURE(paintPicture, scaled_blended, kScaled, false);
BENCHMARK_CAPTURE(paintPicture, turned, kTurned, true);
BENCHMARK_CAPTURE(paintPicture, turned_blended, kTurned, false);
BENCHMARK_CAPTURE(paintPicture, perspective, kDeep, true);
BENCHMARK_CAPTURE(paintPicture, perspective_blended, kDeep, false);
BENCHMARK_CAPTURE(paintTreated, opacity, true, addOpacity);
BENCHMARK_CAPTURE(paintTreated, tint, false, addTint);
BENCHMARK_CAPTURE(paintTreated, colour, false, addColour);
BENCHMARK_CAPTURE(paintTreated, straight, false, addStraight);
BENCHMARK_CAPTURE(paintTreated, mask, true, addOwnMask);
BENCHMARK_CAPTURE(paintTreated, mask_scaled, true, addMask);
BENCHMARK_CAPTURE(paintTreated, gradient, true, addGradient);
BENCHMARK_CAPTURE(paintTreated, key, true, addKey);
BENCHMARK_CAPTURE(paintTreated, grey, true, addGrey);
BENCHMARK_CAPTURE(paintTreated, mosaic_bordered, true, addMosaic);
BENCHMARK_CAPTURE(paintTreated, wave, true, addWave);
BENCHMARK_CAPTURE(paintTreated, light, false, addLight);
BENCHMARK_CAPTURE(paintTreated, screen, false, addScreen);
BENCHMARK_CAPTURE(paintTreated, multiply, false, addMultiply);
BENCHMARK(paintLetters)->Arg(0)->Arg(500);
BENCHMARK(sharedEdges)->Arg(4)->Arg(500);
BENCHMARK(meshOfTriangles)->Arg(100)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
BENCHMARK(blurredPicture);
BENCHMARK(encoderPlanes);
BENCHMARK(decodedPicture);

}  // namespace

BENCHMARK_MAIN();
