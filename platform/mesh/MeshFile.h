// Meshes from files: glTF 2.0 (binary, or as text with what lies beside it) and Wavefront objects with their
// materials, told apart by their content.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/base/File.h"
#include "platform/image/Image.h"

namespace platform {

/// Corner of a triangle: place, normal, place in the picture (0, 0 its upper left corner).
struct MeshCorner {
    std::array<float, 3> place{}, normal{};
    std::array<float, 2> texture{};
};

struct MeshMaterial {
    enum class Alpha { Opaque, Mask, Blend };

    std::string name;
    Color color{1, 1, 1, 1};  ///< multiplies the picture
    std::array<float, 3> emission{};
    int picture = -1, emissionPicture = -1;  ///< places in MeshFile::pictures; -1: none
    Alpha alpha = Alpha::Opaque;
    float cutOff = 0.5f;  ///< of a mask: less alpha is none
    bool isDoubleSided = false;
    bool isLit = true;
};

/// Triangles of one material; outsides run counter-clockwise.
struct MeshPart {
    std::vector<MeshCorner> corners;
    int material = 0;
    bool isSmooth = false;  ///< normals change within triangles
};

struct MeshNode {
    std::string name;
    int parent = -1;  ///< a node before this one; -1: none
    std::array<float, 3> translation{}, scale{1, 1, 1};
    std::array<float, 4> rotation{0, 0, 0, 1};  ///< x, y, z, w; of length 1
    std::array<float, 16> matrix{};             ///< column by column; where hasMatrix, instead of the three
    bool hasMatrix = false;
    std::vector<int> parts;  ///< places in MeshFile::parts
};

/// One moved property of a node. With Cubic each time has three values: slope before, value, slope behind.
struct MeshTrack {
    enum class Property { Translation, Rotation, Scale };
    enum class Way { Step, Linear, Cubic };

    int node = 0;
    Property property = Property::Translation;
    Way way = Way::Linear;
    std::vector<float> times;   ///< seconds, rising; at least one
    std::vector<float> values;  ///< 3 numbers each, 4 of a rotation
};

struct MeshAnimation {
    std::string name;
    float seconds = 0;  ///< the last time of all tracks
    std::vector<MeshTrack> tracks;
};

/// Not decoded.
struct MeshPicture {
    std::string name;
    FileHandle file;  ///< none: it is missing, or may not be opened
};

/// All indices are good, all numbers finite.
struct MeshFile {
    std::vector<MeshNode> nodes;  ///< parents before their children
    std::vector<MeshPart> parts;
    std::vector<MeshMaterial> materials;
    std::vector<MeshPicture> pictures;
    std::vector<MeshAnimation> animations;
    std::vector<std::string> leftOut;  ///< what the file has and is not shown: "skins", "points and lines"
};

/// Opens a file by its name relative to the mesh's own; gives none where it is missing or may not be opened.
using OpenBeside = std::function<FileHandle(const std::string& name)>;

/// `name` is the file in messages. Throws Error(Template). Any thread.
MeshFile readMeshFile(const FileHandle& file, const std::string& name, const OpenBeside& openBeside);

}  // namespace platform
