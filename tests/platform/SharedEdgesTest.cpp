#include "platform/pixels/SharedEdges.h"

#include <cmath>
#include <ctime>

#include "PaintFixture.h"

namespace platform {
namespace {

QuadPaint inColours(const Surface& picture, const std::array<std::array<double, 2>, 4>& corners) {
    QuadPaint paint = rectangle(picture, 0, 0, 1, 1);
    for (size_t i = 0; i < 4; ++i) {
        paint.corners[i].x = corners[i][0];
        paint.corners[i].y = corners[i][1];
    }
    return paint;
}

// The halves of a turned rectangle, the right one painted last.
std::vector<QuadPaint> halves(const Surface& picture, double degrees, double apart = 0) {
    const double angle = degrees * std::numbers::pi / 180, c = std::cos(angle), s = std::sin(angle);
    const auto at = [&](double x, double y) {
        return std::array{50.3 + c * x - s * y, 49.6 + s * x + c * y};
    };
    return {inColours(picture, {at(-30, -25), at(0, -25), at(0, 25), at(-30, 25)}),
            inColours(picture, {at(apart, -25), at(30, -25), at(30, 25), at(apart, 25)})};
}

// The most that a pixel far from the rim of the two halves differs from `level`.
int worstInside(const Picture& canvas, int level) {
    int worst = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x)
            if (std::hypot(x + 0.5 - 50.3, y + 0.5 - 49.6) < 23)
                worst = std::max(worst, std::abs(canvas.at(x, y).red - level));
    return worst;
}

TEST(SharedEdgesTest, NoGroundShowsBetweenHalves) {
    const Picture white(4, 4, {255, 255, 255, 255});
    for (const double degrees : {0.0, 7.0, 33.0, 45.0, 80.0, 90.0, 200.0})
        for (const double apart : {0.0, 0.05, -0.05}) {
            std::vector<QuadPaint> paints = halves(white.surface(true), degrees, apart);
            Picture canvas(100, 100);
            if (degrees == 33.0) {
                paint(paints, kBlack, canvas);
                EXPECT_GT(worstInside(canvas, 255), 30) << "the case that is cured";
            }
            shareEdges(paints);
            paint(paints, kBlack, canvas);
            EXPECT_EQ(worstInside(canvas, 255), 0) << degrees << ' ' << apart;
        }
}

TEST(SharedEdgesTest, TranslucentHalvesNeitherGapeNorOverlap) {
    const Picture white(4, 4, {255, 255, 255, 255});
    for (int degrees = 0; degrees < 360; degrees += 9)
        for (const double apart : {0.0, 0.05, -0.05}) {
            std::vector<QuadPaint> paints = halves(white.surface(true), degrees, apart);
            for (QuadPaint& each : paints) each.opacity = 0.5f;
            shareEdges(paints);
            Picture canvas(100, 100);
            paint(paints, kBlack, canvas);
            EXPECT_EQ(worstInside(canvas, 128), 0) << degrees << ' ' << apart;
        }
}

TEST(SharedEdgesTest, AnEdgeOnTheMiddlesOfPixelsBelongsToOneShape) {
    const Picture white(4, 4, {255, 255, 255, 255});
    for (const bool upright : {true, false}) {
        std::vector<QuadPaint> paints{upright ? rectangle(white.surface(true), 10, 10, 40.5, 60)
                                              : rectangle(white.surface(true), 10, 10, 60, 40.5),
                                      upright ? rectangle(white.surface(true), 40.5, 10, 60, 60)
                                              : rectangle(white.surface(true), 10, 40.5, 60, 60)};
        for (QuadPaint& each : paints) each.opacity = 0.5f;
        shareEdges(paints);
        Picture canvas(100, 100);
        paint(paints, kBlack, canvas);
        for (int i = 11; i < 59; ++i) EXPECT_EQ(canvas.at(upright ? i : 30, upright ? 30 : i).red, 128) << i;
    }
}

TEST(SharedEdgesTest, TheRimOfWhatSharesAnEdgeStaysSmooth) {
    const Picture white(4, 4, {255, 255, 255, 255});
    std::vector<QuadPaint> paints = halves(white.surface(true), 33);
    shareEdges(paints);
    Picture canvas(100, 100), whole(100, 100);
    paint(paints, kBlack, canvas);
    paint({turned(white.surface(true), 50.3, 49.6, 60, 50, 33)}, kBlack, whole);
    int worst = 0, differing = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) {
            const int difference = std::abs(canvas.at(x, y).red - whole.at(x, y).red);
            worst = std::max(worst, difference);
            differing += difference > 2;
        }
    EXPECT_LE(differing, 6) << "but for the ends of the edge";
    EXPECT_LE(worst, 80);
}

TEST(SharedEdgesTest, AShapeBehindAnotherDoesNotShowBesideIt) {
    // Both lie on the same side of their common edge.
    const Picture white(4, 4, {255, 255, 255, 255}), black(4, 4, {0, 0, 0, 255});
    std::vector<QuadPaint> paints{rectangle(black.surface(true), 20, 20, 60, 80),
                                  rectangle(white.surface(true), 20, 20, 50, 80)};
    for (QuadPaint& each : paints) {
        each.corners[0].x = each.corners[3].x = 20;
        each.corners[0].y = 20, each.corners[3].y = 80;
    }
    shareEdges(paints);
    Picture canvas(100, 100);
    paint(paints, 0xFFFFFFFF, canvas);
    for (int y = 20; y < 80; ++y) EXPECT_EQ(canvas.at(19, y).red, 255);
}

TEST(SharedEdgesTest, TimeGrowsWithTheNumberOfShapes) {
    const Picture white(4, 4, {255, 255, 255, 255});
    const auto seconds = [&](int count, bool isStack) {
        std::vector<QuadPaint> paints;
        for (int i = 0; i < count; ++i) {
            const double x = isStack ? 0 : i % 100 * 10, y = isStack ? 0 : i / 100 * 10;
            paints.push_back(rectangle(white.surface(true), x, y, x + 10, y + 10));
        }
        const std::clock_t start = std::clock();
        shareEdges(paints);
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    };
    for (const bool isStack : {true, false}) {
        const double few = seconds(2000, isStack) + seconds(2000, isStack), many = seconds(32000, isStack);
        EXPECT_LT(many, few / 2 * 16 * 8) << isStack;  // 256 times would be the square
    }
}

}  // namespace
}  // namespace platform
