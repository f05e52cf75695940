// Meshes from files and curved surfaces, drawn by both painters; and files that nobody should trust.
#include <epoxy/gl.h>

#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>

#include "DrawableFixture.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "platform/mesh/MeshFile.h"

namespace multiscene::testing {

namespace {

/// A glTF file in the making: a document that tests change, and its bytes.
struct GltfBytes {
    Dictionary document{{"asset", dictionary({{"version", "2.0"}})},
                        {"scenes", array({dictionary({{"nodes", array({0})}})})}};
    std::string bytes;
    Value::Array views, accessors;

    template <typename Number>
    int add(const std::vector<Number>& numbers, const char* type, int components, int componentType) {
        while (bytes.size() % 4 != 0) bytes += '\0';
        const size_t size = numbers.size() * sizeof(Number);
        views.push_back(dictionary(
            {{"buffer", 0}, {"byteOffset", int64_t(bytes.size())}, {"byteLength", int64_t(size)}}));
        bytes.append(reinterpret_cast<const char*>(numbers.data()), size);
        accessors.push_back(dictionary({{"bufferView", int64_t(views.size()) - 1},
                                        {"componentType", componentType},
                                        {"count", int64_t(numbers.size()) / components},
                                        {"type", type}}));
        return int(accessors.size()) - 1;
    }
    int places(const std::vector<float>& numbers) { return add(numbers, "VEC3", 3, 5126); }

    /// As one binary file.
    std::string file() const {
        Dictionary whole = document;
        whole["buffers"] = array({dictionary({{"byteLength", int64_t(bytes.size())}})});
        whole["bufferViews"] = Value(views);
        whole["accessors"] = Value(accessors);
        std::string text = platform::jsonText(Value(whole));
        while (text.size() % 4 != 0) text += ' ';
        const auto word = [](size_t number) {
            const auto small = uint32_t(number);
            return std::string(reinterpret_cast<const char*>(&small), 4);
        };
        const std::string chunks =
            word(text.size()) + "JSON" + text + word(bytes.size()) + std::string("BIN\0", 4) + bytes;
        return "glTF" + word(2) + word(12 + chunks.size()) + chunks;
    }
};

/// A cube of side 2 with the whole texture on each side, as QVCubeObject3D has it.
GltfBytes cubeFile() {
    GltfBytes cube;
    std::vector<float> places, normals, coordinates;
    std::vector<uint16_t> corners;
    for (int axis = 0; axis < 3; ++axis)
        for (const float side : {-1.0f, 1.0f}) {
            glm::vec3 normal(0), up(0, 1, 0);
            normal[axis] = side;
            if (axis == 1) up = {0, 0, -side};
            const glm::vec3 right = glm::cross(up, normal);
            const auto first = uint16_t(places.size() / 3);
            for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}) {
                const glm::vec3 at = normal + float(x) * right + float(y) * up;
                places.insert(places.end(), {at.x, at.y, at.z});
                normals.insert(normals.end(), {normal.x, normal.y, normal.z});
                coordinates.insert(coordinates.end(), {float(x + 1) / 2, float(1 - y) / 2});
            }
            for (const int corner : {0, 1, 2, 0, 2, 3}) corners.push_back(uint16_t(first + corner));
        }
    const Value attributes = dictionary({{"POSITION", cube.places(places)},
                                         {"NORMAL", cube.places(normals)},
                                         {"TEXCOORD_0", cube.add(coordinates, "VEC2", 2, 5126)}});
    cube.document["meshes"] = array(
        {dictionary({{"primitives", array({dictionary({{"attributes", attributes},
                                                       {"indices", cube.add(corners, "SCALAR", 1, 5123)},
                                                       {"material", 0}})})}})});
    cube.document["materials"] = array({dictionary({{"name", "side"}})});
    cube.document["nodes"] = array({dictionary({{"mesh", 0}})});
    return cube;
}

std::vector<Pixel> slope(int side) {
    std::vector<Pixel> pixels;
    for (int i = 0; i < side * side; ++i)
        pixels.push_back({uint8_t(255 * (i % side) / side), uint8_t(255 * (i / side) / side), 90, 255});
    return pixels;
}

Value lightsOfTwoKinds() {
    return fromJson(R"([
        {"lightSourceType": 2, "lightSourcePosition": "0.4,0.5,1", "ambientMaterialColor": "0.2,0.2,0.25",
         "diffuseMaterialColor": "0.6,0.6,0.5", "specularMaterialColor": "0.4,0.4,0.4", "specularShininess": 12},
        {"lightSourceType": 1, "lightSourcePosition": "-1,0.2,0.6", "diffuseMaterialColor": "0.2,0.1,0"}])");
}

/// While it lives, looks at what is handed to GL to be kept.
class Uploads {
  public:
    Uploads() {
        count_ = widest_ = 0;
        swap();
    }
    ~Uploads() { swap(); }
    Uploads(const Uploads&) = delete;
    Uploads& operator=(const Uploads&) = delete;

    int count() const { return count_; }
    int widest() const { return widest_; }

  private:
    static void swap() {
        std::swap(epoxy_glBufferData, bufferData_);
        std::swap(epoxy_glBufferSubData, bufferSubData_);
        std::swap(epoxy_glTexImage2D, texImage_);
        std::swap(epoxy_glTexSubImage2D, texSubImage_);
    }

    static void bufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage) {
        ++count_;
        bufferData_(target, size, data, usage);
    }
    static void bufferSubData(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) {
        ++count_;
        bufferSubData_(target, offset, size, data);
    }
    static void texImage(GLenum target, GLint level, GLint internal, GLsizei width, GLsizei height,
                         GLint border, GLenum format, GLenum type, const void* pixels) {
        if (pixels) widest_ = std::max(widest_, width);
        count_ += pixels != nullptr;  // without any it is room to draw into
        texImage_(target, level, internal, width, height, border, format, type, pixels);
    }
    static void texSubImage(GLenum target, GLint level, GLint x, GLint y, GLsizei width, GLsizei height,
                            GLenum format, GLenum type, const void* pixels) {
        ++count_;
        texSubImage_(target, level, x, y, width, height, format, type, pixels);
    }

    static inline int count_ = 0, widest_ = 0;  ///< widest: pixels of a picture
    static inline PFNGLBUFFERDATAPROC bufferData_ = bufferData;
    static inline PFNGLBUFFERSUBDATAPROC bufferSubData_ = bufferSubData;
    static inline PFNGLTEXIMAGE2DPROC texImage_ = texImage;
    static inline PFNGLTEXSUBIMAGE2DPROC texSubImage_ = texSubImage;
};

}  // namespace

class MeshObjectTest : public DrawableFixture {
  protected:
    std::string write(const std::string& name, const std::string& content) const {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }

    /// Turned by radians, as a placement without an end is read.
    static Value placed(const char* rotation, const char* place = "0,0,-60") {
        return array({dictionary({{"startTranslate", place}, {"startRotate", rotation}, {"endFps", 99}})});
    }
    static Dictionary lit(const char* type, const char* rotation = "0.35,0.5,0") {
        return {{"type", Value(type)},
                {"FpsInfo", dictionary({{"isLightEnable", true}})},
                {"LightSourceArray", lightsOfTwoKinds()},
                {"TransformArray", placed(rotation)}};
    }
    Dictionary mesh(const std::string& file, Dictionary more = {}) const {
        more["meshFile"] = Value(path(file));
        Dictionary node = lit("QVMeshObject3D");
        node["MeshFileInfo"] = Value(std::move(more));
        return node;
    }
    static Value pictureOf(const std::string& file) {
        return dictionary({{"textureType", "image"}, {"texture", Value(file)}});
    }
    void surface(Dictionary shape, const char* rotation, const Value& texture, Dictionary more = {}) {
        Dictionary node = lit("QVSurfaceObject3D", rotation);
        node["SurfaceInfo"] = Value(std::move(shape));
        node["TextureInfo"] = texture;
        for (auto& [key, value] : more) node[key] = value;
        add(Value(std::move(node)));
    }

    /// What the file is refused for; empty when it is taken.
    std::string problemOf(const std::string& content) const {
        write("hostile", content);
        const platform::FileHandle file = platform::openFile(path("hostile"), 0);
        const auto beside = [&](const std::string& name) { return platform::openFile(path(name), 0); };
        try {
            platform::readMeshFile(file, "hostile", beside);
            return {};
        } catch (const platform::Error& error) {
            EXPECT_EQ(error.kind(), platform::ErrorKind::Template);
            EXPECT_EQ(error.file(), "hostile") << error.what();
            return error.message();
        }
    }
};

TEST_F(MeshObjectTest, SurfacesLookAlikeInBothPainters) {
    const Value texture = pictureOf(picture("slope.png", slope(64), 64));
    const std::pair<const char*, Dictionary> shapes[] = {
        {"sphere", {{"radius", 26}}},
        {"cylinder", {{"radius", 18}, {"modelHeight", 40}, {"isOpen", true}}},
        {"cone", {{"radius", 22}, {"modelHeight", 44}}},
        {"torus", {{"radius", 18}, {"tubeRadius", 8}}},
        {"roundedBox", {{"modelWidth", 34}, {"modelHeight", 30}, {"modelDepth", 26}, {"cornerRadius", 8}}},
        {"wave", {{"modelWidth", 52}, {"modelHeight", 40}, {"waveHeight", 6}, {"waveLength", 30}}},
        {"curl", {{"modelWidth", 52}, {"modelHeight", 40}, {"radius", 6}, {"curl", 0.4}}}};
    mayDiffer = 200;  // outlines, and edges within them
    for (const auto& [kind, numbers] : shapes) {
        SCOPED_TRACE(kind);
        newScene();
        Dictionary shape = numbers;
        shape["surfaceType"] = Value(kind);
        surface(shape, "0.6,0.45,0.2", texture);
        draw(0, kBlue);
        EXPECT_EQ(at(1, 1), kBlue);
        const bool isRing = std::string(kind) == "torus";
        const Pixel& middle = isRing ? at(32, 14) : at(32, 32);
        EXPECT_FALSE(isNear(middle, kBlue, 40)) << "something is there";
        EXPECT_EQ(middle[3], 255);
    }

    newScene();
    surface({{"surfaceType", "sphere"}, {"radius", 30}}, "0,0,0", texture);
    draw(0);
    EXPECT_NEAR(at(32, 4)[1], at(28, 4)[1], 12) << "its pole is one point";
    EXPECT_LT(at(10, 32)[0], at(50, 32)[0]) << "the picture runs from left to right";

    newScene();
    surface({{"surfaceType", "torus"}, {"radius", 20}, {"tubeRadius", 7}}, "1.57,0,0", texture);
    draw(0, kBlue);
    EXPECT_EQ(at(32, 32), kBlue) << "the hole";
}

TEST_F(MeshObjectTest, ATargetHidesWhatLiesBehindToo) {
    const Value texture = pictureOf(picture("slope.png", slope(64), 64));
    const auto ring = [&](Dictionary more) {
        surface({{"surfaceType", "torus"}, {"radius", 17}, {"tubeRadius", 9}}, "1.2,0.35,0", texture, more);
    };
    mayDiffer = 250;
    ring({});
    draw(0);
    const PaintedPicture seen = picture_;
    newScene();
    ring({{"FpsInfo", dictionary({{"isLightEnable", true},
                                  {"RenderDepth", 5},
                                  {"isRenderToTexture", true},
                                  {"textureSize", "64,64"},
                                  {"textureMapKey", "ring"}})}});
    add(dictionary({{"type", "QVQuadObject3D"},
                    {"TextureInfo", dictionary({{"textureType", "RTTTexture"}, {"textureMapKey", "ring"}})},
                    {"QuadInfo", dictionary({{"modelWidth", side}, {"modelHeight", side}})}}));
    draw(0);
    size_t different = 0;
    for (size_t i = 0; i < seen.pixels.size(); ++i)
        different += !isNear(seen.pixels[i], picture_.pixels[i], 12);
    EXPECT_LE(different, 250u) << "outlines alone";
}

TEST_F(MeshObjectTest, WavesAndPagesMoveByKeys) {
    const Value texture = pictureOf(picture("white.png", {kWhite}));
    mayDiffer = 160;  // the roll's edges
    surface({{"surfaceType", "curl"}, {"modelWidth", 56}, {"modelHeight", 30}, {"radius", 4}}, "0,0,0",
            texture,
            {{"AnimationInfo", array({dictionary({{"sartFps", 0},
                                                  {"endFps", 10},
                                                  {"startCurl", 0.0},
                                                  {"endCurl", 1.0},
                                                  {"startRenderAlpha", 1.0},
                                                  {"endRenderAlpha", 0.0}})})}});
    draw(0);
    EXPECT_GT(at(58, 32)[3], 250);
    draw(5);
    EXPECT_EQ(at(58, 32)[3], 0) << "half of it is rolled up";
    EXPECT_NEAR(at(8, 32)[3], 128, 3) << "and half of it has faded";
}

TEST_F(MeshObjectTest, ACubeOfAFileLooksAsACubeDoes) {
    const std::string slopePicture = picture("slope.png", slope(64), 64);
    GltfBytes file = cubeFile();
    file.document["images"] = array({dictionary({{"uri", "slope.png"}})});
    file.document["textures"] = array({dictionary({{"source", 0}})});
    file.document["materials"] = array({dictionary(
        {{"pbrMetallicRoughness", dictionary({{"baseColorTexture", dictionary({{"index", 0}})}})}})});
    write("cube.glb", file.file());

    Dictionary cube = lit("QVCubeObject3D");
    cube["FpsInfo"] = dictionary({{"isLightEnable", true}, {"isEnableDephTest", true}});
    cube["TextureInfo"] = pictureOf(slopePicture);
    cube["MeshInfo"] = dictionary({{"modelWidth", 30}, {"modelHeight", 30}, {"modelDepth", 30}});
    mayDiffer = 120;
    show(Value(cube), 0, kBlack);
    const PaintedPicture known = picture_;

    const auto expectCube = [&](const Dictionary& node, const char* why) {
        show(Value(node), 0, kBlack);
        size_t different = 0;
        for (size_t i = 0; i < known.pixels.size(); ++i)
            different += !isNear(known.pixels[i], picture_.pixels[i], 3);
        EXPECT_LE(different, 40u) << why;
        for (const RenderReport::Entry& entry : reported())
            ADD_FAILURE() << why << ": " << entry.what << " " << entry.name;
    };
    expectCube(mesh("cube.glb", {{"modelSize", 30}}), "glTF with a picture beside it");
    Dictionary own = mesh("cube.glb", {{"modelSize", 30}});
    own["TextureInfo"] = pictureOf(slopePicture);
    expectCube(own, "the node's own picture");

    write("cube.mtl", "newmtl side\nKd 1 1 1\nmap_Kd slope.png\n");
    std::string obj = "mtllib cube.mtl\nusemtl side\n";
    for (const char* corner : {"vt 0 0\n", "vt 1 0\n", "vt 1 1\n", "vt 0 1\n"}) obj += corner;
    for (int axis = 0, first = 1; axis < 3; ++axis)
        for (const float to : {-1.0f, 1.0f}) {
            glm::vec3 normal(0), up(0, 1, 0);
            normal[axis] = to;
            if (axis == 1) up = {0, 0, -to};
            const glm::vec3 right = glm::cross(up, normal);
            for (const auto& [x, y] : {std::pair{-1, -1}, {1, -1}, {1, 1}, {-1, 1}}) {
                const glm::vec3 place = normal + float(x) * right + float(y) * up;
                obj += "v " + std::to_string(place.x) + " " + std::to_string(place.y) + " " +
                       std::to_string(place.z) + "\n";
            }
            obj += "f";
            for (int corner = 0; corner < 4; ++corner)
                obj += " " + std::to_string(first + corner) + "/" + std::to_string(corner + 1);
            obj += "\n";
            first += 4;
        }
    write("cube.obj", obj);
    expectCube(mesh("cube.obj", {{"modelSize", 30}, {"meshOrigin", "middle"}}), "Wavefront, without normals");
}

TEST_F(MeshObjectTest, ColoursEmissionAndClearPartsShow) {
    GltfBytes file = cubeFile();
    const auto material = [](Dictionary surface, Dictionary more) {
        more["pbrMetallicRoughness"] = Value(std::move(surface));
        return Value(std::move(more));
    };
    file.document["materials"] =
        array({material({{"baseColorFactor", array({0.0, 1.0, 0.0, 0.5})}},
                        {{"alphaMode", "BLEND"}, {"emissiveFactor", array({1.0, 0.0, 0.0})}})});
    write("cube.glb", file.file());
    Dictionary node = mesh("cube.glb", {{"modelSize", 30}});
    node.erase("LightSourceArray");
    node["TransformArray"] = placed("0,0,0");
    show(Value(node), 0, kBlue);
    EXPECT_TRUE(isNear(at(32, 32), {128, 128, 127, 255}, 2)) << "half of red and green over blue";
}

TEST_F(MeshObjectTest, AnimationsArePlayedByFrames) {
    GltfBytes file = cubeFile();
    const int times = file.add(std::vector<float>{0, 1}, "SCALAR", 1, 5126);
    const auto sampler = [&](int values, const char* way) {
        return dictionary({{"input", times}, {"output", values}, {"interpolation", way}});
    };
    // Three times as far as a cube is wide; the curve leaves and arrives level.
    const int line = file.places({0, 0, 0, 6, 0, 0});
    const int curve = file.places({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0});
    Value::Array animations;
    for (const auto& [name, values, way] :
         {std::tuple{"line", line, "LINEAR"}, {"step", line, "STEP"}, {"curve", curve, "CUBICSPLINE"}})
        animations.push_back(dictionary(
            {{"name", name},
             {"samplers", array({sampler(values, way)})},
             {"channels",
              array({dictionary(
                  {{"sampler", 0}, {"target", dictionary({{"node", 0}, {"path", "translation"}})}})})}}));
    file.document["animations"] = Value(animations);
    write("cube.glb", file.file());
    // Where the middle of a cube of 8 pixels is that starts at 8.
    const auto placeAt = [&](Dictionary info, int64_t number) {
        newScene();
        info["modelSize"] = Value(8);
        Dictionary node = mesh("cube.glb", std::move(info));
        node["ColorInfo"] = dictionary({{"r", 1}, {"g", 1}, {"b", 1}, {"a", 1}});
        node["TransformArray"] = placed("0,0,0", "-24,0,-60");
        add(Value(node));
        for (int64_t each = 0; each < number; ++each) {
            scene->setCurrentRenderTime(frame(each));
            scene->updateData();
        }
        draw(number);
        double sum = 0, weight = 0;
        for (int x = 0; x < side; ++x) {
            sum += at(x, 32)[3] * (x + 0.5);
            weight += at(x, 32)[3];
        }
        return sum / weight;
    };
    EXPECT_NEAR(placeAt({}, 0), 8, 0.3);
    EXPECT_NEAR(placeAt({}, 10), 8 + 24.0 / 3, 0.3) << "a third of a second at 30 frames a second; the first";
    EXPECT_NEAR(placeAt({{"animationName", "step"}}, 29), 8, 0.3);
    EXPECT_NEAR(placeAt({{"animationName", "curve"}}, 10), 8 + 24.0 * 7 / 27, 0.3);
    EXPECT_NEAR(placeAt({{"animationSpeed", 2}}, 10), 8 + 24.0 * 2 / 3, 0.3);
    EXPECT_NEAR(placeAt({}, 40), 8 + 24.0 / 3, 0.3) << "it has begun anew";
    EXPECT_NEAR(placeAt({{"isLoop", false}}, 40), 8 + 24, 0.3) << "it stays where it ends";
}

TEST_F(MeshObjectTest, IsHandedToGLOnce) {
    GltfBytes file = cubeFile();
    const int times = file.add(std::vector<float>{0, 1}, "SCALAR", 1, 5126);
    const int ways = file.places({0, 0, 0, 6, 0, 0});
    file.document["animations"] = array({dictionary(
        {{"samplers", array({dictionary({{"input", times}, {"output", ways}})})},
         {"channels",
          array({dictionary(
              {{"sampler", 0}, {"target", dictionary({{"node", 0}, {"path", "translation"}})}})})}})});
    write("cube.glb", file.file());
    Dictionary own = mesh("cube.glb", {{"modelSize", 30}});
    own["TextureInfo"] = pictureOf(picture("slope.png", slope(64), 64));
    add(Value(own));
    mayDiffer = 200;
    const Uploads uploads;
    draw(0, kBlack);
    const int first = uploads.count();
    EXPECT_GT(first, 1) << "corners and picture";
    for (int64_t number = 1; number < 5; ++number) draw(number, kBlack);
    EXPECT_EQ(uploads.count(), first);
}

TEST_F(MeshObjectTest, LargePicturesAreMadeSmaller) {
    constexpr int most = platform::limitOf<int>("maxMeshPictureSide");
    for (const int width : {most - 1, most, most + 1}) {
        GltfBytes file = cubeFile();
        file.document["images"] = array({dictionary({{"uri", "wide.png"}})});
        file.document["textures"] = array({dictionary({{"source", 0}})});
        file.document["materials"] = array({dictionary(
            {{"pbrMetallicRoughness", dictionary({{"baseColorTexture", dictionary({{"index", 0}})}})}})});
        write("cube.glb", file.file());
        picture("wide.png", std::vector<Pixel>(size_t(width), kRed), width);
        newScene();
        mayDiffer = 200;
        add(Value(mesh("cube.glb", {{"modelSize", 30}})));
        const Uploads uploads;
        draw(0, kBlack);
        EXPECT_EQ(uploads.widest(), most) << width;
    }
}

TEST_F(MeshObjectTest, HostileFilesAreRefusedInOneLine) {
    const std::string good = cubeFile().file();
    EXPECT_EQ(problemOf(good), "");
    for (size_t length = 0; length < good.size(); length += 23)
        EXPECT_NE(problemOf(good.substr(0, length)), "") << length << " bytes of it";

    const auto changed = [](const std::function<void(GltfBytes&)>& change) {
        GltfBytes file = cubeFile();
        change(file);
        return file.file();
    };
    const auto replace = [](Value& entry, const char* key, Value value) {
        entry = entry.with(key, std::move(value));
    };
    using Change = std::function<void(GltfBytes&)>;
    const std::pair<const char*, Change> changes[] = {
        {"reaches beyond its buffer view",
         [&](GltfBytes& file) { replace(file.accessors[0], "count", 4000); }},
        {"reaches beyond its buffer view",
         [&](GltfBytes& file) { replace(file.accessors[0], "byteOffset", int64_t(1) << 62); }},
        {"more than the", [&](GltfBytes& file) { replace(file.accessors[0], "count", 1'000'000'000); }},
        {"more than the", [&](GltfBytes& file) { replace(file.accessors[3], "count", 1'000'000'000); }},
        {"more than the",
         [&](GltfBytes& file) { replace(file.accessors[0], "count", std::numeric_limits<int64_t>::max()); }},
        {"reaches beyond its buffer",
         [&](GltfBytes& file) { replace(file.views[0], "byteLength", int64_t(1) << 40); }},
        {"reaches beyond its buffer", [&](GltfBytes& file) { replace(file.views[0], "byteOffset", -1); }},
        {"has a stride of 2", [&](GltfBytes& file) { replace(file.views[0], "byteStride", 2); }},
        {"is not there", [&](GltfBytes& file) { replace(file.accessors[0], "bufferView", 77); }},
        {"names nothing", [&](GltfBytes& file) { file.bytes.replace(file.bytes.size() - 2, 2, "\xFF\xFF"); }},
        {"what is no number",
         [&](GltfBytes& file) {
             const float none = std::numeric_limits<float>::quiet_NaN();
             std::memcpy(file.bytes.data(), &none, sizeof none);
         }},
        {"lies within itself",
         [&](GltfBytes& file) {
             file.document["nodes"] =
                 array({dictionary({{"children", array({1})}}), dictionary({{"children", array({0})}})});
         }},
        {"triangles that are drawn",
         [&](GltfBytes& file) {
             // A thousand nodes that all show a thousand triangles.
             std::vector<uint16_t> corners(3000, 1);
             const int indices = file.add(corners, "SCALAR", 1, 5123);
             file.document["meshes"] = array(
                 {dictionary({{"primitives", array({dictionary({{"attributes", dictionary({{"POSITION", 0}})},
                                                                {"indices", indices}})})}})});
             Value::Array nodes, roots;
             for (int i = 0; i < 1000; ++i) {
                 nodes.push_back(dictionary({{"mesh", 0}}));
                 roots.push_back(i);
             }
             file.document["nodes"] = Value(nodes);
             file.document["scenes"] = array({dictionary({{"nodes", Value(roots)}})});
         }},
        {"needs the extension",
         [&](GltfBytes& file) { file.document["extensionsRequired"] = array({"EXT_unknown"}); }},
        {"bytes of pictures",
         [&](GltfBytes& file) {
             file.bytes.resize(4 << 20);
             file.views.push_back(dictionary({{"buffer", 0}, {"byteLength", int64_t(file.bytes.size())}}));
             const Value picture = dictionary({{"bufferView", int64_t(file.views.size()) - 1}});
             file.document["images"] = Value(Value::Array(40, picture));
         }},
        {"is not there", [&](GltfBytes& file) { replace(file.views[0], "buffer", 1); }}};
    for (const auto& [words, change] : changes) {
        const std::string problem = problemOf(changed(change));
        EXPECT_NE(problem.find(words), std::string::npos) << words << ": \"" << problem << '"';
    }

    const std::pair<const char*, std::string> texts[] = {
        {"version 2", "{}"},
        {"not valid JSON", "{\"asset\":"},
        {"no triangles", "# nothing\nv 0 0 0\n"},
        {"not there", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 9\n"},
        {"what is no number", "v 0 0 0\nv 1e39 0 0\nv 0 1 0\nf 1 2 3\n"},
        {"corners in one face", "v 0 0 0\nf" +
                                    [] {
                                        std::string corners;
                                        for (int i = 0; i < 100'000; ++i) corners += " 1";
                                        return corners;
                                    }()},
        {"missing or may not be opened", "mtllib none.mtl\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"}};
    for (const auto& [words, text] : texts) {
        const std::string problem = problemOf(text);
        EXPECT_NE(problem.find(words), std::string::npos) << words << ": \"" << problem << '"';
    }

    // A scene with such a file says so once, and goes on.
    write("bad.glb", good.substr(0, 200));
    add(Value(mesh("bad.glb")));
    draw(0, kBlue);
    EXPECT_EQ(at(32, 32), kBlue);
    ASSERT_EQ(reported().size(), 1u);
    EXPECT_NE(reported()[0].name.find("bad.glb: "), std::string::npos) << reported()[0].name;
}

}  // namespace multiscene::testing
