#include "platform/mesh/ObjFile.h"

#define TINYOBJLOADER_IMPLEMENTATION
#include <tiny_obj_loader.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <sstream>

#include "platform/base/Limits.h"
#include "platform/base/Value.h"
#include "platform/mesh/MeshText.h"

namespace platform {

namespace {

constexpr uint64_t mostMaterialFiles = 16, mostMaterialBytes = 1 << 20;
constexpr size_t longestLine = 4096, mostFaceCorners = 64;

/// The word that a line begins with.
std::string_view firstWord(std::string_view line) {
    const size_t first = line.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    line.remove_prefix(first);
    return line.substr(0, line.find_first_of(" \t"));
}

/// What follows it.
std::string_view restOf(std::string_view line) {
    const std::string_view word = firstWord(line);
    if (word.empty()) return {};
    std::string_view rest = line.substr(static_cast<size_t>(word.data() + word.size() - line.data()));
    while (!rest.empty() && (rest.front() == ' ' || rest.front() == '\t')) rest.remove_prefix(1);
    while (!rest.empty() && (rest.back() == ' ' || rest.back() == '\t')) rest.remove_suffix(1);
    return rest;
}

size_t countWords(std::string_view text) {
    size_t count = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto isGap = [](char letter) { return letter == ' ' || letter == '\t'; };
        if (!isGap(text[i]) && (i == 0 || isGap(text[i - 1]))) ++count;
    }
    return count;
}

/// Hands each line over, without its end.
template <typename Take>
void forEachLine(std::string_view text, const Take& take) {
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = text.substr(0, end);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        take(line);
    }
}

/// The lines that the library is given: those that make triangles and choose their materials, no more of them
/// than is allowed, none that it would take long over.
class Sifted {
  public:
    Sifted(std::string_view text, const std::string& name) : name_(name) {
        forEachLine(text, [this](std::string_view line) { take(line); });
        if (triangles_ == 0) fail("holds no triangles that can be read");
    }

    const std::string& lines() const { return lines_; }
    const std::vector<std::string>& materialFiles() const { return materialFiles_; }

  private:
    [[noreturn]] void fail(const std::string& message) const {
        throw Error(ErrorKind::Template, message, name_);
    }
    void count(uint64_t& things, uint64_t more, const char* what, uint64_t limit) const {
        if ((things += more) > limit) fail(beyondLimit(things, what, limit));
    }

    void take(std::string_view line) {
        const std::string_view word = firstWord(line);
        if (word.empty()) return;
        if (word == "v" || word == "vn" || word == "vt")
            count(numbers_, 3, "numbers", limitOf("maxMeshNumbers"));
        else if (word == "f")
            countFace(restOf(line));
        else if (word == "mtllib")
            return takeMaterialFile(restOf(line));
        else if (word != "usemtl" && word != "s")
            return;
        if (line.size() > longestLine) fail("has a line of " + std::to_string(line.size()) + " bytes");
        lines_.append(line);
        lines_ += '\n';
    }

    void countFace(std::string_view corners) {
        const size_t words = countWords(corners);
        if (words > mostFaceCorners) fail(beyondLimit(words, "corners in one face", mostFaceCorners));
        if (words > 2) count(triangles_, words - 2, "triangles", limitOf("maxMeshTriangles"));
    }

    void takeMaterialFile(std::string_view name) {
        if (materialFiles_.size() < mostMaterialFiles) materialFiles_.emplace_back(name);
    }

    const std::string& name_;
    std::string lines_;
    std::vector<std::string> materialFiles_;
    uint64_t numbers_ = 0, triangles_ = 0;
};

/// Names of materials in files beside, which the library asks for by "usemtl".
class Materials {
  public:
    Materials(const std::vector<std::string>& files, const std::string& name, const OpenBeside& openBeside,
              MeshFile& mesh)
        : name_(name), openBeside_(openBeside), mesh_(mesh) {
        for (const std::string& file : files) read(file);
        mesh_.materials.push_back({});  // of what has none
    }

    /// Of the library's list.
    int placeOf(int material) const {
        const auto last = static_cast<int>(mesh_.materials.size()) - 1;
        return material >= 0 && material < last ? material : last;
    }
    const std::map<std::string, int>& byName() const { return byName_; }

  private:
    [[noreturn]] void fail(const std::string& message) const {
        throw Error(ErrorKind::Template, message, name_);
    }

    void read(const std::string& file) {
        const std::string path = relativePathOf(file);
        const FileHandle opened = path.empty() ? FileHandle() : openBeside_(path);
        if (!opened) fail("its file \"" + file.substr(0, 100) + "\" is missing or may not be opened");
        const std::vector<uint8_t> bytes = readFile(opened, path, mostMaterialBytes, ErrorKind::Template);
        forEachLine({reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                    [this](std::string_view line) { take(firstWord(line), restOf(line)); });
    }

    void take(std::string_view word, std::string_view rest) {
        if (word == "newmtl") {
            if (mesh_.materials.size() >= limitOf("maxMeshMaterials"))
                fail(beyondLimit(mesh_.materials.size() + 1, "materials", limitOf("maxMeshMaterials")));
            byName_.emplace(rest, static_cast<int>(mesh_.materials.size()));
            mesh_.materials.push_back({.name = std::string(rest)});
        }
        if (mesh_.materials.empty()) return;
        MeshMaterial& material = mesh_.materials.back();
        if (word == "Kd") {
            const auto color = threeOf(rest);
            material.color = {color[0], color[1], color[2], material.color.alpha};
        } else if (word == "Ke") {
            material.emission = threeOf(rest);
        } else if (word == "d" || word == "Tr") {
            const float given = threeOf(rest)[0];
            material.color.alpha = word == "d" ? given : 1 - given;
        } else if (word == "map_Kd") {
            material.picture = pictureOf(rest);
        } else if (word == "map_Ke") {
            material.emissionPicture = pictureOf(rest);
            if (material.emission == std::array<float, 3>{}) material.emission = {1, 1, 1};
        }
        if (material.color.alpha < 1) material.alpha = MeshMaterial::Alpha::Blend;
    }

    /// One number stands for three; each is brought to 0 to 1.
    static std::array<float, 3> threeOf(std::string_view text) {
        std::array<float, 3> numbers{};
        for (size_t i = 0; i < 3; ++i) {
            const size_t end = text.find_first_of(" \t");
            const float number = Value(text.substr(0, end)).floatValue();
            numbers[i] = std::isfinite(number) ? std::clamp(number, 0.0f, 1.0f) : 0;
            if (end == std::string_view::npos || restAfter(text, end).empty()) {
                if (i == 0) numbers[1] = numbers[2] = numbers[0];
                break;
            }
            text = restAfter(text, end);
        }
        return numbers;
    }
    static std::string_view restAfter(std::string_view text, size_t end) {
        const size_t next = text.find_first_not_of(" \t", end);
        return next == std::string_view::npos ? std::string_view() : text.substr(next);
    }

    /// Options before the name are passed over, and the name is then the last word.
    int pictureOf(std::string_view rest) {
        if (rest.starts_with("-")) rest = rest.substr(rest.find_last_of(" \t") + 1);
        std::string path = relativePathOf(rest);
        std::ranges::replace(path, '\\', '/');
        if (path.empty()) return -1;
        for (size_t i = 0; i < mesh_.pictures.size(); ++i)
            if (mesh_.pictures[i].name == path) return static_cast<int>(i);
        if (mesh_.pictures.size() >= limitOf("maxMeshPictures"))
            fail(beyondLimit(mesh_.pictures.size() + 1, "pictures", limitOf("maxMeshPictures")));
        FileHandle file = openBeside_(path);
        mesh_.pictures.push_back({path, std::move(file)});
        return static_cast<int>(mesh_.pictures.size()) - 1;
    }

    const std::string& name_;
    const OpenBeside& openBeside_;
    MeshFile& mesh_;
    std::map<std::string, int> byName_;
};

/// Gives the library the materials' numbers; what they are is read above.
class NamesForLibrary : public tinyobj::MaterialReader {
  public:
    explicit NamesForLibrary(const Materials& materials) : materials_(materials) {}

    bool operator()(const std::string&, std::vector<tinyobj::material_t>*, std::map<std::string, int>* names,
                    std::string*, std::string*) override {
        *names = materials_.byName();
        return true;
    }

  private:
    const Materials& materials_;
};

/// What the library has read, as triangles by their materials.
class Triangles {
  public:
    Triangles(const tinyobj::attrib_t& numbers, const Materials& materials, const std::string& name)
        : numbers_(numbers), materials_(materials), name_(name) {
        for (const float number : numbers.vertices) requireFinite(number);
        for (const float number : numbers.normals) requireFinite(number);
        for (const float number : numbers.texcoords) requireFinite(number);
    }

    void add(const tinyobj::mesh_t& mesh) {
        size_t first = 0;
        for (size_t face = 0; face < mesh.num_face_vertices.size(); ++face) {
            const size_t count = mesh.num_face_vertices[face];
            if (count > mesh.indices.size() - first) fail("has faces that are cut short");
            const bool isSmoothed =
                face < mesh.smoothing_group_ids.size() && mesh.smoothing_group_ids[face] != 0;
            const int material =
                materials_.placeOf(face < mesh.material_ids.size() ? mesh.material_ids[face] : -1);
            addFace({mesh.indices.data() + first, count}, material, isSmoothed);
            first += count;
        }
    }

    std::vector<MeshPart> parts() && {
        std::vector<MeshPart> parts;
        for (auto& [key, part] : parts_) {
            if (key.second == Normals::Flat) setFlatNormals(part.corners);
            if (key.second == Normals::Smoothed) smooth(part, places_[key]);
            parts.push_back(std::move(part));
        }
        return parts;
    }

  private:
    enum class Normals { Given, Smoothed, Flat };
    using Key = std::pair<int, Normals>;

    [[noreturn]] void fail(const std::string& message) const {
        throw Error(ErrorKind::Template, message, name_);
    }
    void requireFinite(float number) const {
        if (!std::isfinite(number)) fail("holds what is no number");
    }

    /// Triangles around the first corner.
    void addFace(std::span<const tinyobj::index_t> corners, int material, bool isSmoothed) {
        if (corners.size() < 3) return;
        const bool hasNormals =
            std::ranges::all_of(corners, [](const auto& at) { return at.normal_index >= 0; });
        const Key key{material, hasNormals ? Normals::Given : isSmoothed ? Normals::Smoothed : Normals::Flat};
        MeshPart& part = parts_[key];
        part.material = material;
        part.isSmooth = key.second != Normals::Flat;
        for (size_t i = 2; i < corners.size(); ++i)
            for (const size_t corner : {size_t{0}, i - 1, i}) {
                part.corners.push_back(cornerOf(corners[corner]));
                if (key.second == Normals::Smoothed)
                    places_[key].push_back(static_cast<uint32_t>(corners[corner].vertex_index));
            }
    }

    MeshCorner cornerOf(const tinyobj::index_t& at) const {
        MeshCorner corner;
        take(numbers_.vertices, at.vertex_index, corner.place);
        if (at.normal_index >= 0) take(numbers_.normals, at.normal_index, corner.normal);
        if (at.texcoord_index < 0) return corner;
        take(numbers_.texcoords, at.texcoord_index, corner.texture);
        corner.texture[1] = 1 - corner.texture[1];  // it is counted from below
        return corner;
    }
    template <size_t kCount>
    void take(const std::vector<float>& from, int index, std::array<float, kCount>& to) const {
        if (index < 0 || static_cast<size_t>(index) >= from.size() / kCount)
            fail("a face names corner " + std::to_string(int64_t{index} + 1) + ", which is not there");
        std::copy_n(&from[static_cast<size_t>(index) * kCount], kCount, to.begin());
    }

    /// Corners at one place share the mean of their triangles' normals.
    static void smooth(MeshPart& part, const std::vector<uint32_t>& places) {
        setFlatNormals(part.corners);
        std::map<uint32_t, std::array<float, 3>> sums;
        for (size_t i = 0; i < places.size(); ++i) {
            auto& sum = sums[places[i]];
            for (size_t k = 0; k < 3; ++k) sum[k] += part.corners[i].normal[k];
        }
        for (size_t i = 0; i < places.size(); ++i) {
            const auto& sum = sums[places[i]];
            const float length = std::hypot(sum[0], sum[1], sum[2]);
            if (!(length > 0)) continue;
            for (size_t k = 0; k < 3; ++k) part.corners[i].normal[k] = sum[k] / length;
        }
    }

    const tinyobj::attrib_t& numbers_;
    const Materials& materials_;
    const std::string& name_;
    std::map<Key, MeshPart> parts_;
    std::map<Key, std::vector<uint32_t>> places_;
};

}  // namespace

MeshFile readObj(std::span<const uint8_t> bytes, const std::string& name, const OpenBeside& openBeside) {
    const Sifted sifted({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, name);
    MeshFile mesh;
    const Materials materials(sifted.materialFiles(), name, openBeside, mesh);
    NamesForLibrary names(materials);
    std::istringstream lines("mtllib all\n" + sifted.lines());
    tinyobj::attrib_t numbers;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> ignored;
    std::string warning, problem;
    if (!tinyobj::LoadObj(&numbers, &shapes, &ignored, &warning, &problem, &lines, &names, false, false))
        throw Error(ErrorKind::Template, "cannot be read: " + problem.substr(0, problem.find('\n')), name);
    Triangles triangles(numbers, materials, name);
    for (const tinyobj::shape_t& shape : shapes) triangles.add(shape.mesh);
    mesh.parts = std::move(triangles).parts();
    MeshNode node;
    for (size_t i = 0; i < mesh.parts.size(); ++i) node.parts.push_back(static_cast<int>(i));
    mesh.nodes.push_back(std::move(node));
    return mesh;
}

}  // namespace platform
