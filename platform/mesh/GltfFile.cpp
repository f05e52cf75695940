#include "platform/mesh/GltfFile.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <map>
#include <optional>
#include <set>

#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "platform/mesh/GltfBuffers.h"
#include "platform/mesh/MeshText.h"

namespace platform {

namespace {

using Bytes = std::span<const uint8_t>;

constexpr std::string_view kMagic = "glTF";

std::string_view textOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

uint32_t wordAt(Bytes bytes, size_t offset) {
    uint32_t word;
    std::memcpy(&word, &bytes[offset], sizeof word);
    return word;
}

/// The two parts of a binary file, or a file of text alone.
struct Chunks {
    Bytes json, binary;
};

Chunks chunksOf(Bytes bytes, const std::string& name) {
    if (!textOf(bytes).starts_with(kMagic)) return {bytes, {}};
    constexpr size_t header = 12, chunkHeader = 8;
    constexpr uint32_t json = 0x4E4F534A, binary = 0x004E4942;
    const auto fail = [&](const std::string& message) { throw Error(ErrorKind::Template, message, name); };
    if (bytes.size() < header + chunkHeader) fail("is cut short");
    if (wordAt(bytes, 4) != 2) fail("is glTF of version " + std::to_string(wordAt(bytes, 4)) + ", not 2");
    Chunks chunks;
    for (size_t at = header; bytes.size() - at >= chunkHeader;) {
        const size_t length = wordAt(bytes, at), kind = wordAt(bytes, at + 4);
        at += chunkHeader;
        if (length > bytes.size() - at) fail("is cut short");
        if (kind == json && chunks.json.empty()) chunks.json = bytes.subspan(at, length);
        if (kind == binary && chunks.binary.empty()) chunks.binary = bytes.subspan(at, length);
        at += length;
    }
    return chunks;
}

Value documentOf(Bytes json, const std::string& name) {
    const uint64_t values = countJsonValues(textOf(json));
    if (values > limitOf("maxMeshValues"))
        throw Error(ErrorKind::Template, beyondLimit(values, "values", limitOf("maxMeshValues")), name);
    Value document = parseJson(textOf(json), name, ErrorKind::Template);
    const std::string version = document["asset"].string("version");
    if (!version.starts_with("2")) throw Error(ErrorKind::Template, "is no glTF of version 2", name);
    return document;
}

/// Files hold light's strength; colours here are as screens take them.
float shown(float light) {
    const float part = std::clamp(light, 0.0f, 1.0f);
    return part <= 0.0031308f ? 12.92f * part : 1.055f * std::pow(part, 1 / 2.4f) - 0.055f;
}

template <size_t kCount>
std::array<float, kCount> numbersOf(const Value& list, std::array<float, kCount> numbers) {
    const Value::Array& given = list.array();
    for (size_t i = 0; i < kCount && i < given.size(); ++i) {
        const float number = given[i].floatValue();
        if (std::isfinite(number)) numbers[i] = number;
    }
    return numbers;
}

class Reader {
  public:
    Reader(const Value& document, Bytes binary, const std::string& name, const OpenBeside& openBeside)
        : document_(document), buffers_(document, binary, name, openBeside), openBeside_(openBeside) {}

    MeshFile read() {
        requireSupport();
        readPictures();
        readMaterials();
        readNodes();
        readAnimations();
        file_.leftOut.assign(leftOut_.begin(), leftOut_.end());
        return std::move(file_);
    }

  private:
    using PartsOfMesh = std::vector<int>;

    [[noreturn]] void fail(const std::string& message) const { buffers_.fail(message); }
    void require(uint64_t count, const char* things, uint64_t limit) const {
        if (count > limit) fail(beyondLimit(count, things, limit));
    }

    void requireSupport() const {
        static constexpr std::string_view known[] = {"KHR_materials_unlit", "KHR_mesh_quantization",
                                                     "KHR_materials_emissive_strength", "EXT_texture_webp"};
        for (const Value& extension : document_.array("extensionsRequired"))
            if (std::ranges::find(known, extension.stringValue()) == std::end(known))
                fail("needs the extension " + extension.stringValue() + ", which is not supported");
    }

    // --- materials

    void readPictures() {
        const Value::Array& images = document_.array("images");
        require(images.size(), "pictures", limitOf("maxMeshPictures"));
        for (const Value& image : images) file_.pictures.push_back(pictureOf(image));
    }

    /// Several pictures may name the same bytes.
    FileHandle embedded(Bytes bytes) {
        require(pictureBytes_ += bytes.size(), "bytes of pictures", limitOf("maxMeshBytes"));
        return fileInMemory(textOf(bytes));
    }

    MeshPicture pictureOf(const Value& image) {
        const std::string uri = image.string("uri");
        const std::string name = image.has("name") ? image.string("name") : uri.substr(0, 100);
        if (image.has("bufferView")) return {name, embedded(buffers_.view(image.integer("bufferView")))};
        if (const auto data = bytesOfDataUri(uri)) return {image.string("name"), embedded(*data)};
        const std::string path = relativePathOf(uri);
        return {path.empty() ? name : path, path.empty() ? FileHandle() : openBeside_(path)};
    }

    int pictureBehind(const Value& texture) {
        if (!texture.isDictionary()) return -1;
        if (texture.integer("texCoord") != 0) leftOut_.insert("second sets of texture coordinates");
        if (texture["extensions"].has("KHR_texture_transform")) leftOut_.insert("moved textures");
        const Value& known = buffers_.entry("textures", texture.integer("index"), "texture");
        const Value& webp = known["extensions"]["EXT_texture_webp"];
        const Value& source = webp.has("source") ? webp["source"] : known["source"];
        if (source.isNone()) return -1;
        buffers_.entry("images", source.integerValue(), "picture");
        return source.intValue();
    }

    void readMaterials() {
        const Value::Array& materials = document_.array("materials");
        require(materials.size(), "materials", limitOf("maxMeshMaterials"));
        for (const Value& material : materials) file_.materials.push_back(materialOf(material));
        file_.materials.push_back({});  // of what has none
    }

    MeshMaterial materialOf(const Value& info) {
        const Value& surface = info["pbrMetallicRoughness"];
        const auto color = numbersOf<4>(surface["baseColorFactor"], {1, 1, 1, 1});
        const auto emission = numbersOf<3>(info["emissiveFactor"], {0, 0, 0});
        const Value& strength = info["extensions"]["KHR_materials_emissive_strength"]["emissiveStrength"];
        const float factor = strength ? std::max(strength.floatValue(), 0.0f) : 1;
        MeshMaterial material{
            .name = info.string("name"),
            .color = {shown(color[0]), shown(color[1]), shown(color[2]), std::clamp(color[3], 0.0f, 1.0f)},
            .picture = pictureBehind(surface["baseColorTexture"]),
            .emissionPicture = pictureBehind(info["emissiveTexture"]),
            .isDoubleSided = info.boolean("doubleSided"),
            .isLit = !info["extensions"].has("KHR_materials_unlit")};
        for (size_t i = 0; i < 3; ++i) material.emission[i] = shown(emission[i] * factor);
        const std::string alpha = info.string("alphaMode");
        if (alpha == "MASK") material.alpha = MeshMaterial::Alpha::Mask;
        if (alpha == "BLEND") material.alpha = MeshMaterial::Alpha::Blend;
        if (info.has("alphaCutoff")) material.cutOff = info.real("alphaCutoff");
        return material;
    }

    // --- triangles

    /// The parts of a mesh; `isMirrored`: for a node that turns it inside out.
    const PartsOfMesh& partsOf(int64_t mesh, bool isMirrored) {
        const auto known = parts_.find({mesh, isMirrored});
        if (known != parts_.end()) return known->second;
        PartsOfMesh parts;
        const Value& info = buffers_.entry("meshes", mesh, "mesh");
        for (const Value& primitive : info.array("primitives")) {
            MeshPart part = partOf(primitive);
            if (part.corners.empty()) continue;
            if (isMirrored)
                for (size_t i = 0; i + 2 < part.corners.size(); i += 3)
                    std::swap(part.corners[i + 1], part.corners[i + 2]);
            parts.push_back(static_cast<int>(file_.parts.size()));
            file_.parts.push_back(std::move(part));
            require(file_.parts.size(), "parts", limitOf("maxMeshParts"));
        }
        if (info.has("weights")) leftOut_.insert("morph targets");
        return parts_.emplace(std::pair(mesh, isMirrored), std::move(parts)).first->second;
    }

    MeshPart partOf(const Value& primitive) {
        constexpr int64_t triangles = 4, fan = 6;
        const int64_t mode = primitive.has("mode") ? primitive.integer("mode") : triangles;
        const Value& attributes = primitive["attributes"];
        if (mode < triangles || mode > fan) {
            leftOut_.insert("points and lines");
            return {};
        }
        if (!attributes.has("POSITION")) return {};
        if (primitive["extensions"].has("KHR_draco_mesh_compression"))
            fail("is compressed by Draco, which is not supported");
        if (primitive.has("targets")) leftOut_.insert("morph targets");
        if (attributes.has("COLOR_0")) leftOut_.insert("colours of corners");
        const auto places = buffers_.numbers(attributes.integer("POSITION"), 3);
        const std::vector<uint32_t> order = trianglesOf(primitive, mode, places.count);
        require(trianglesSoFar_ += order.size() / 3, "triangles", limitOf("maxMeshTriangles"));
        MeshPart part{.corners = std::vector<MeshCorner>(order.size()),
                      .material = materialOfPart(primitive)};
        const auto fill = [&](const GltfBuffers::Numbers& numbers, auto MeshCorner::*member) {
            if (numbers.count < places.count) fail("an attribute has fewer elements than there are places");
            for (size_t i = 0; i < order.size(); ++i) {
                auto& target = part.corners[i].*member;
                std::copy_n(&numbers.values[order[i] * target.size()], target.size(), target.begin());
            }
        };
        fill(places, &MeshCorner::place);
        if (attributes.has("TEXCOORD_0"))
            fill(buffers_.numbers(attributes.integer("TEXCOORD_0"), 2), &MeshCorner::texture);
        part.isSmooth = attributes.has("NORMAL");
        if (part.isSmooth)
            fill(buffers_.numbers(attributes.integer("NORMAL"), 3), &MeshCorner::normal);
        else
            setFlatNormals(part.corners);
        return part;
    }

    int materialOfPart(const Value& primitive) const {
        if (!primitive.has("material")) return static_cast<int>(file_.materials.size()) - 1;
        buffers_.entry("materials", primitive.integer("material"), "material");
        return primitive.int32("material");
    }

    /// Three corners a triangle, whatever the primitive is.
    std::vector<uint32_t> trianglesOf(const Value& primitive, int64_t mode, size_t places) {
        std::vector<uint32_t> order;
        if (primitive.has("indices")) {
            order = buffers_.indices(primitive.integer("indices"), places, 3 * limitOf("maxMeshTriangles"));
        } else {
            require(places, "corners", 3 * limitOf("maxMeshTriangles"));
            order.resize(places);
            for (size_t i = 0; i < places; ++i) order[i] = static_cast<uint32_t>(i);
        }
        constexpr int64_t triangles = 4, strip = 5;
        if (mode == triangles) {
            order.resize(order.size() / 3 * 3);
            return order;
        }
        std::vector<uint32_t> split;
        for (size_t i = 2; i < order.size(); ++i) {
            const bool isOdd = mode == strip && i % 2 == 1;
            const size_t first = mode == strip ? i - 2 : 0;
            split.push_back(order[first]);
            split.push_back(order[isOdd ? i : i - 1]);
            split.push_back(order[isOdd ? i - 1 : i]);
        }
        return split;
    }

    // --- nodes

    void readNodes() {
        const Value::Array& nodes = document_.array("nodes");
        require(nodes.size(), "nodes", limitOf("maxMeshNodes"));
        places_.assign(nodes.size(), -1);
        const Value::Array& scenes = document_.array("scenes");
        Value::Array roots;
        if (!scenes.empty())
            roots = buffers_.entry("scenes", document_.integer("scene"), "scene").array("nodes");
        if (roots.size() > nodes.size()) fail("a scene lists more nodes than there are");
        for (const Value& root : roots) addTree(root.integerValue());
        uint64_t shown = 0;
        for (const MeshNode& node : file_.nodes)
            for (const int part : node.parts)
                shown += file_.parts[static_cast<size_t>(part)].corners.size() / 3;
        require(shown, "triangles that are drawn", limitOf("maxMeshTriangles"));
    }

    struct Waiting {
        int64_t node;
        int parent;
        uint64_t depth;
        bool isMirrored;
    };

    void addTree(int64_t root) {
        std::vector<Waiting> waiting{{root, -1, 1, false}};
        while (!waiting.empty()) {
            const Waiting next = waiting.back();
            waiting.pop_back();
            const Value& info = buffers_.entry("nodes", next.node, "node");
            int& place = places_[static_cast<size_t>(next.node)];
            if (place >= 0)
                fail("node " + std::to_string(next.node) + " is met twice, or lies within itself");
            require(next.depth, "nodes within each other", limitOf("maxMeshDepth"));
            place = static_cast<int>(file_.nodes.size());
            MeshNode node = nodeOf(info);
            node.parent = next.parent;
            const bool isMirrored = next.isMirrored != turnsInsideOut(node);
            if (info.has("mesh")) node.parts = partsOf(info.integer("mesh"), isMirrored);
            if (info.has("skin")) leftOut_.insert("skins");
            file_.nodes.push_back(std::move(node));
            const Value::Array& children = info.array("children");
            if (children.size() > places_.size()) fail("a node lists more nodes than there are");
            for (size_t i = children.size(); i-- > 0;)
                waiting.push_back({children[i].integerValue(), place, next.depth + 1, isMirrored});
            require(waiting.size(), "nodes", limitOf("maxMeshNodes"));
        }
    }

    static MeshNode nodeOf(const Value& info) {
        MeshNode node{.name = info.string("name"),
                      .translation = numbersOf<3>(info["translation"], {0, 0, 0}),
                      .scale = numbersOf<3>(info["scale"], {1, 1, 1}),
                      .rotation = unit(numbersOf<4>(info["rotation"], {0, 0, 0, 1})),
                      .matrix = numbersOf<16>(info["matrix"], {}),
                      .hasMatrix = info.array("matrix").size() == 16,
                      .parts = {}};
        return node;
    }

    static std::array<float, 4> unit(std::array<float, 4> rotation) {
        const double length =
            std::sqrt(double{rotation[0]} * rotation[0] + double{rotation[1]} * rotation[1] +
                      double{rotation[2]} * rotation[2] + double{rotation[3]} * rotation[3]);
        if (!(length > 0) || !std::isfinite(length)) return {0, 0, 0, 1};
        for (float& part : rotation) part = static_cast<float>(part / length);
        return rotation;
    }

    static bool turnsInsideOut(const MeshNode& node) {
        if (!node.hasMatrix) return node.scale[0] * node.scale[1] * node.scale[2] < 0;
        const auto m = [&](size_t column, size_t row) { return double{node.matrix[column * 4 + row]}; };
        return m(0, 0) * (m(1, 1) * m(2, 2) - m(2, 1) * m(1, 2)) -
                   m(1, 0) * (m(0, 1) * m(2, 2) - m(2, 1) * m(0, 2)) +
                   m(2, 0) * (m(0, 1) * m(1, 2) - m(1, 1) * m(0, 2)) <
               0;
    }

    // --- animations

    void readAnimations() {
        const Value::Array& animations = document_.array("animations");
        require(animations.size(), "animations", limitOf("maxMeshAnimations"));
        uint64_t tracks = 0;
        for (const Value& info : animations) {
            require(tracks += info.array("channels").size(), "tracks", limitOf("maxMeshTracks"));
            MeshAnimation animation{.name = info.string("name"), .seconds = 0, .tracks = {}};
            for (const Value& channel : info.array("channels"))
                if (auto track = trackOf(channel, info)) {
                    animation.seconds = std::max(animation.seconds, track->times.back());
                    animation.tracks.push_back(std::move(*track));
                }
            file_.animations.push_back(std::move(animation));
        }
    }

    /// None for what is not shown.
    std::optional<MeshTrack> trackOf(const Value& channel, const Value& animation) {
        const Value& target = channel["target"];
        const std::string path = target.string("path");
        if (path == "weights") leftOut_.insert("morph targets");
        MeshTrack track;
        if (path == "rotation")
            track.property = MeshTrack::Property::Rotation;
        else if (path == "scale")
            track.property = MeshTrack::Property::Scale;
        else if (path != "translation")
            return std::nullopt;
        if (!target.has("node")) return std::nullopt;
        buffers_.entry("nodes", target.integer("node"), "node");
        track.node = places_[static_cast<size_t>(target.integer("node"))];
        if (track.node < 0 || file_.nodes[static_cast<size_t>(track.node)].hasMatrix) return std::nullopt;
        const Value::Array& samplers = animation.array("samplers");
        const int64_t sampler = channel.integer("sampler");
        if (sampler < 0 || static_cast<uint64_t>(sampler) >= samplers.size()) fail("a sampler is not there");
        readSampler(samplers[static_cast<size_t>(sampler)], track);
        return track;
    }

    void readSampler(const Value& sampler, MeshTrack& track) {
        const std::string way = sampler.string("interpolation");
        if (way == "STEP") track.way = MeshTrack::Way::Step;
        if (way == "CUBICSPLINE") track.way = MeshTrack::Way::Cubic;
        track.times = buffers_.numbers(sampler.integer("input"), 1).values;
        if (track.times.front() < 0 || !std::ranges::is_sorted(track.times))
            fail("the times of an animation do not rise");
        const bool isRotation = track.property == MeshTrack::Property::Rotation;
        auto values = buffers_.numbers(sampler.integer("output"), isRotation ? 4 : 3);
        const size_t each = track.way == MeshTrack::Way::Cubic ? 3 : 1;
        if (values.count < track.times.size() * each) fail("an animation has fewer values than times");
        track.values = std::move(values.values);
    }

    const Value& document_;
    GltfBuffers buffers_;
    const OpenBeside& openBeside_;
    MeshFile file_;
    std::set<std::string> leftOut_;
    std::vector<int> places_;  ///< of the file's nodes in ours; -1: not met
    std::map<std::pair<int64_t, bool>, PartsOfMesh> parts_;
    uint64_t trianglesSoFar_ = 0, pictureBytes_ = 0;
};

}  // namespace

bool looksLikeGltf(Bytes bytes) {
    std::string_view text = textOf(bytes);
    if (text.starts_with(kMagic)) return true;
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first != std::string_view::npos && text[first] == '{';
}

MeshFile readGltf(Bytes bytes, const std::string& name, const OpenBeside& openBeside) {
    const Chunks chunks = chunksOf(bytes, name);
    const Value document = documentOf(chunks.json, name);
    return Reader(document, chunks.binary, name, openBeside).read();
}

}  // namespace platform
