// Triangles in space, lit, as the processor paints them.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>

#include "PaintFixture.h"

namespace platform {
namespace {

using Corner = std::array<float, MeshCorners::kNumbers>;  ///< place, normal, place in the picture

/// Triangles with their memory, seen without perspective: -1 to 1 is the canvas, y up.
struct Mesh {
    std::vector<Corner> corners;
    MeshPaint paint;

    void add(const std::array<float, 3>& at, const std::array<float, 2>& inPicture = {0, 0}) {
        corners.push_back({at[0], at[1], at[2], 0, 0, 1, inPicture[0], inPicture[1]});
    }
    void addRectangle(float left, float bottom, float right, float top, float depth) {
        for (const auto& [x, y] : {std::pair{left, bottom},
                                   {right, bottom},
                                   {right, top},
                                   {left, bottom},
                                   {right, top},
                                   {left, top}})
            add({x, y, depth}, {(x + 1) / 2, (1 - y) / 2});
    }
};

/// Meshes and shapes in the order in which they are painted.
struct Drawing {
    std::vector<PreparedPaint> shapes;
    std::vector<PreparedMesh> meshes;

    void add(Mesh& mesh, const Picture& canvas) {
        mesh.paint.corners = {mesh.corners.empty() ? nullptr : mesh.corners[0].data(), mesh.corners.size()};
        PreparedMesh prepared;
        prepared.shapesBelow = shapes.size();
        if (prepareMesh(mesh.paint, canvas.width(), canvas.height(), prepared))
            meshes.push_back(std::move(prepared));
    }
    void add(const QuadPaint& quad, const Picture& canvas) {
        PreparedPaint prepared;
        if (preparePaint(quad, canvas.width(), canvas.height(), prepared))
            shapes.push_back(std::move(prepared));
    }
    void paint(const Canvas& canvas, int threads = 1) const {
        TilePainter(threads).paint(shapes, meshes, kBlack, canvas);
    }
};

class RandomMeshes {
  public:
    explicit RandomMeshes(unsigned seed)
        : opaque(Picture::noise(40, 30, true, seed)),
          clear(Picture::noise(23, 50, false, seed)),
          random_(seed) {}

    Mesh next() {
        Mesh mesh;
        MeshPaint& paint = mesh.paint;
        for (int i = below(40) * 3; i >= 0; --i) addCorner(mesh);
        if (below(2)) paint.toClip = {1, 0, 0, 0, 0, 1.5f, 0, 0, 0, 0, -1.2f, -1, 0, 0, 1.2f, 1.5f};  // deep
        const int picture = below(3);
        if (picture == 1) paint.picture = opaque.surface(true);
        if (picture == 2) paint.picture = clear.surface(false);
        paint.facing = static_cast<MeshFacing>(below(3));
        paint.premultiplied = below(2) == 0;
        paint.wrap = static_cast<Wrap>(below(2));
        if (below(3) == 0) paint.tint = {part(), part(), part(), part()};
        if (below(3) == 0) paint.opacity = part();
        if (below(3) == 0)
            paint.blend = {static_cast<BlendFactor>(below(11)), static_cast<BlendFactor>(below(11))};
        paint.depthTest = below(3) != 0;
        paint.eye = {0, 0, 2};
        for (int i = below(4); i > 0; --i) paint.lights.push_back(light());
        return mesh;
    }
    int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }

    const Picture opaque, clear;

  private:
    float part() { return static_cast<float>(below(256)) / 255; }
    float place() { return 2.4f * part() - 1.2f; }
    void addCorner(Mesh& mesh) {
        mesh.add({place(), place(), place()}, {3 * part() - 1, 3 * part() - 1});
        Corner& corner = mesh.corners.back();
        if (below(4) && mesh.corners.size() > 3)  // beside another one
            for (size_t i = 0; i < 3; ++i) corner[i] = mesh.corners[mesh.corners.size() - 4][i] + place() / 8;
        for (size_t i = 3; i < 6; ++i) corner[i] = place();
    }
    MeshLight light() {
        const auto vector = [&] { return Vector3{place(), place(), place()}; };
        return {.kind = static_cast<MeshLightKind>(below(3)),
                .place = vector(),
                .ambient = {part() / 4, 0, part() / 8},
                .diffuse = {part(), part(), part()},
                .specular = below(2) ? Vector3{part(), part(), 0} : Vector3{},
                .shininess = static_cast<float>(below(60)) / (below(2) ? 1.0f : 1.7f),
                .coneDirection = vector(),
                .coneExponent = static_cast<float>(below(9)) / 2,
                .coneCosine = part()};
    }

    std::mt19937 random_;
};

TEST(MeshTest, EveryInstructionSetAndNumberOfThreadsGivesTheSameBytes) {
    for (unsigned seed = 0; seed < 16; ++seed) {
        RandomMeshes random(seed);
        Picture wanted(seed % 8 ? 203 : 1100, 141);
        std::vector<Mesh> meshes;
        for (int i = 0; i < 7; ++i) meshes.push_back(random.next());
        Drawing drawing;
        for (Mesh& mesh : meshes) {
            drawing.add(mesh, wanted);
            if (random.below(3) == 0)
                drawing.add(
                    turned(random.opaque.surface(true), random.below(200), random.below(140), 90, 60, 20),
                    wanted);
        }
        drawing.paint(wanted.canvas());
        for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
            hwy::SetSupportedTargetsForTest(target);
            Picture painted(wanted.width(), wanted.height(), {9, 9, 9, 9});
            drawing.paint(painted.canvas(), static_cast<int>(seed % 3) + 2);
            ASSERT_EQ(painted == wanted, true) << "seed " << seed << " on " << hwy::TargetName(target);
            drawing.paint(painted.upwardsCanvas());
            ASSERT_EQ(painted.flipped() == wanted, true) << "upwards, seed " << seed;
        }
        hwy::SetSupportedTargetsForTest(0);
    }
}

/// A net of triangles over the whole canvas, whose points lie anywhere.
Mesh net(unsigned seed, int cells) {
    std::mt19937 random(seed);
    const auto jitter = [&] { return static_cast<float>(random() % 1000) / 1000 - 0.5f; };
    std::vector<std::array<float, 3>> points;
    for (int y = 0; y <= cells; ++y)
        for (int x = 0; x <= cells; ++x) {
            const bool isInner = x > 0 && y > 0 && x < cells && y < cells;
            const float step = 2.4f / static_cast<float>(cells);
            const auto place = [&](int i) {
                return static_cast<float>(i) * step - 1.2f + (isInner ? 0.4f * step * jitter() : 0);
            };
            points.push_back({place(x), place(y), jitter()});
        }
    Mesh mesh;
    for (int y = 0; y < cells; ++y)
        for (int x = 0; x < cells; ++x) {
            const auto at = [&](int right, int up) {
                return points[static_cast<size_t>((y + up) * (cells + 1) + x + right)];
            };
            for (const auto& point : {at(0, 0), at(1, 0), at(1, 1), at(0, 0), at(1, 1), at(0, 1)})
                mesh.add(point);
        }
    return mesh;
}

TEST(MeshTest, TrianglesThatMeetHaveEachSampleOnce) {
    for (const int cells : {1, 3, 20, 90}) {
        Mesh mesh = net(static_cast<unsigned>(cells), cells);
        mesh.paint.tint = {40 / 255.0f, 0, 0, 1};
        mesh.paint.blend = {BlendFactor::One, BlendFactor::One};
        // A floor that reaches behind the eye and is cut.
        if (cells == 20) mesh.paint.toClip = {3, 0, 0, 0, 0, 2, 0.9f, 0.9f, 0, 0, 0, 0, 0, 0.2f, 0.8f, 1};
        Picture canvas(160, 120);
        Drawing drawing;
        drawing.add(mesh, canvas);
        drawing.paint(canvas.canvas());
        for (int y = 0; y < canvas.height(); ++y)
            for (int x = 0; x < canvas.width(); ++x)
                ASSERT_EQ(canvas.at(x, y), (Pixel{0, 0, 40, 255})) << cells << " cells, at " << x << ',' << y;
    }
}

TEST(MeshTest, NoGroundShowsBetweenTrianglesThatLieOverOthers) {
    const Picture colour(1, 1, {30, 200, 90, 255});
    std::vector<std::array<Corner, 3>> triangles;
    for (const Mesh& each : {net(3, 12), net(4, 17)})
        for (size_t i = 0; i < each.corners.size(); i += 3)
            triangles.push_back({each.corners[i], each.corners[i + 1], each.corners[i + 2]});
    std::shuffle(triangles.begin(), triangles.end(), std::mt19937(5));
    Mesh mesh;
    for (const auto& triangle : triangles)
        mesh.corners.insert(mesh.corners.end(), triangle.begin(), triangle.end());
    mesh.paint.picture = colour.surface(false);  // it does not know that it hides
    Picture canvas(160, 120);
    Drawing drawing;
    drawing.add(mesh, canvas);
    drawing.paint(canvas.canvas());
    EXPECT_EQ(canvas, Picture(160, 120, {30, 200, 90, 255}));
}

TEST(MeshTest, ASilhouetteIsAsBrightAsItsArea) {
    Mesh mesh;
    for (const auto& [x, y] : {std::pair{-0.83f, -0.71f}, {0.77f, -0.4f}, {-0.21f, 0.9f}})
        mesh.add({x, y, 0});
    Picture canvas(100, 100);
    Drawing drawing;
    drawing.add(mesh, canvas);
    drawing.paint(canvas.canvas());
    double sum = 0;
    int between = 0;
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 100; ++x) {
            sum += canvas.at(x, y).red / 255.0;
            between += canvas.at(x, y).red > 0 && canvas.at(x, y).red < 255;
        }
    const double area = 2500 * std::abs(1.6 * 1.61 - 0.62 * 0.31) / 2;
    EXPECT_NEAR(sum, area, 6);
    EXPECT_GT(between, 150) << "of an outline of 230 pixels";
}

TEST(MeshTest, TheNearestIsSeenHoweverManyTrianglesThereAre) {
    Mesh far, near, middle;
    for (int i = 0; i < 35000; ++i)  // more than a tile can number
        far.addRectangle(-1, -1, 1, 1, 0.5f + static_cast<float>(i % 100) / 1000);
    near.addRectangle(-1, -1, 0, 1, -0.5f);
    middle.addRectangle(-1, -1, 1, 1, 0.4f);
    far.paint.tint = {1, 0, 0, 1};
    near.paint.tint = {0, 1, 0, 0.4f};
    middle.paint.tint = {0, 0, 1, 1};
    Picture canvas(16, 16);
    Drawing drawing;
    for (Mesh* mesh : {&near, &far, &middle}) {
        mesh->paint.depthTest = true;
        drawing.add(*mesh, canvas);
    }
    drawing.paint(canvas.canvas());
    EXPECT_EQ(canvas.at(3, 3), (Pixel{0, 102, 0, 255}))
        << "what lies behind a veil that came first is not seen";
    EXPECT_EQ(canvas.at(12, 3), (Pixel{255, 0, 0, 255}));
}

TEST(MeshTest, DepthsStayUnderWhatHidesTheirColours) {
    const Picture white(1, 1, {255, 255, 255, 255});
    Mesh near, far;
    near.addRectangle(-1, -1, 0, 1, -0.5f);
    far.addRectangle(-1, -1, 1, 1, 0.5f);
    far.paint.tint = {1, 0, 0, 1};
    near.paint.depthTest = far.paint.depthTest = true;
    Picture canvas(40, 40);
    Drawing drawing;
    drawing.add(near, canvas);
    drawing.add(rectangle(white.surface(true), -5, -5, 45, 45), canvas);
    drawing.add(far, canvas);
    drawing.paint(canvas.canvas());
    EXPECT_EQ(canvas.at(5, 20), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(canvas.at(35, 20), (Pixel{0, 0, 255, 255}));
}

}  // namespace
}  // namespace platform
