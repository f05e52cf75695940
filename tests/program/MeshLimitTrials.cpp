// Meshes.
#include "platform/mesh/MeshFile.h"
#include "tests/program/LimitTrial.h"

namespace multiscene::test {

namespace {

/// `beside`: the bytes of each file that the mesh names, by its number.
Trial ofMesh(const std::string& limit, std::function<std::string(uint64_t)> content,
             std::function<uint64_t(int file, uint64_t number)> beside = {},
             const std::string& named = "a.mesh") {
    return {limit, kTemplate, {named}, [=](const PlayLimitsTest& test, uint64_t number) {
                return verdictOf([&] {
                    platform::readMeshFile(test.opened("mesh", content(number)), "a.mesh",
                                           [&](const std::string& name) {
                                               const uint64_t bytes = beside(std::stoi(name), number);
                                               return test.opened(name, std::string(bytes, 0));
                                           });
                    return std::string();
                });
            }};
}

std::string gltf(const std::string& members) { return "{\"asset\":{\"version\":\"2.0\"}," + members + "}"; }

/// A list of so many of these.
std::string list(const std::string& name, const std::string& entry, uint64_t number) {
    std::string text = "\"" + name + "\":[" + entry;
    return text + repeated("," + entry, number - 1) + "]";
}

/// A node that shows a mesh of these parts.
std::string shown(const std::string& parts, const std::string& more) {
    return gltf("\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"mesh\":0}],\"meshes\":[{" + parts + "}]," + more);
}

/// Zeros, as they are where no buffer is named.
std::string accessor(uint64_t count, const std::string& type) {
    return "{\"count\":" + std::to_string(count) + ",\"type\":\"" + type + "\"}";
}

std::string withNumbers(uint64_t numbers) {
    constexpr uint64_t turns = 10, each = 3'000'000;
    const std::string part = R"({"indices":0,"attributes":{"POSITION":1}})";
    const uint64_t left = numbers - turns * each, places = left % 2 ? 1 : 2;
    return shown("\"primitives\":[" + repeated(part + ",", turns) +
                     R"({"indices":0,"attributes":{"POSITION":2,"TEXCOORD_0":3}}])",
                 "\"accessors\":[" + accessor(0, "SCALAR") + "," + accessor(each / 3, "VEC3") + "," +
                     accessor(places, "VEC3") + "," + accessor((left - 3 * places) / 2, "VEC2") + "]");
}

std::string nested(uint64_t depth) {
    std::string nodes = "{}";
    for (uint64_t child = depth - 1; child > 0; --child)
        nodes = "{\"children\":[" + std::to_string(child) + "]}," + nodes;
    return gltf("\"scenes\":[{\"nodes\":[0]}],\"nodes\":[" + nodes + "]");
}

}  // namespace

std::vector<Trial> meshTrials() {
    return {
        ofMesh(
            "maxMeshFileBytes",
            [](uint64_t) { return gltf(R"("buffers":[{"uri":"0.bin","byteLength":1}])"); },
            [](int, uint64_t bytes) { return bytes; }, "0.bin"),
        ofMesh(
            "maxMeshBytes",
            [](uint64_t) {
                return gltf(R"("buffers":[{"uri":"0.bin","byteLength":1},{"uri":"1.bin","byteLength":1}])");
            },
            [](int file, uint64_t bytes) { return file == 0 ? bytes / 2 : bytes - bytes / 2; }),
        ofMesh("maxMeshValues",
               [](uint64_t values) {
                   constexpr uint64_t there = 8;  // with one 0
                   return gltf("\"x\":[0" + repeated(",0", values - there) + "]");
               }),
        ofMesh("maxMeshTriangles",
               [](uint64_t triangles) {
                   return "v 0 0 0\nv 1 0 0\nv 0 1 0\n" + repeated("f 1 2 3\n", triangles);
               }),
        ofMesh("maxMeshNumbers", withNumbers),
        ofMesh("maxMeshNodes", [](uint64_t nodes) { return gltf(list("nodes", "{}", nodes)); }),
        ofMesh("maxMeshDepth", nested),
        ofMesh("maxMeshParts",
               [](uint64_t parts) {
                   return shown(list("primitives", R"({"attributes":{"POSITION":0}})", parts),
                                "\"accessors\":[" + accessor(3, "VEC3") + "]");
               }),
        ofMesh("maxMeshMaterials",
               [](uint64_t materials) { return gltf(list("materials", "{}", materials)); }),
        ofMesh("maxMeshPictures", [](uint64_t pictures) { return gltf(list("images", "{}", pictures)); }),
        ofMesh("maxMeshAnimations",
               [](uint64_t animations) { return gltf(list("animations", "{}", animations)); }),
        ofMesh("maxMeshTracks",
               [](uint64_t tracks) {
                   return gltf("\"animations\":[{" + list("channels", "{}", tracks) + "}]");
               }),
    };
}

}  // namespace multiscene::test
