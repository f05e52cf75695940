#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/GLESUtils/Geometry.h"
#include "core/GLESUtils/Texture.h"
#include "platform/mesh/MeshFile.h"

namespace platform {
class FileGate;
}

namespace multiscene {

/// A mesh file made ready to be drawn: its triangles, its decoded pictures, and where its nodes lie now. GL
/// gets triangles and pictures once. Render queue.
class MeshModel {
  public:
    /// Opens the file, and what it names beside itself, through the gate. Throws Error.
    MeshModel(const std::string& path, platform::FileGate& gate);

    struct Material {
        platform::MeshMaterial info;
        std::shared_ptr<Texture> picture, emissionPicture;  ///< none: the colour alone
        bool isOpaque = true;
    };
    /// Triangles of one material at one node.
    struct Part {
        Geometry* triangles;
        const Material* material;
        size_t node;
        bool isSmooth;
    };

    /// Those that hide what is behind them first.
    const std::vector<Part>& parts() const { return parts_; }
    /// Of all triangles at rest, in the file's coordinates.
    const ModelBox& box() const { return box_; }
    /// Where the nodes lie, in the file's coordinates.
    const std::vector<glm::mat4>& pose() const { return pose_; }
    /// Moves the nodes to where the animation has them at that second.
    void setPose(const platform::MeshAnimation* animation, double seconds);
    /// The animation of that name; without a name the first. None where there is none.
    const platform::MeshAnimation* animation(const std::string& name) const;
    bool hasMaterial(const std::string& name) const;

    /// Names of pictures that could not be read.
    const std::vector<std::string>& missingPictures() const { return missing_; }
    /// What the file has and is not shown.
    const std::vector<std::string>& leftOut() const { return file_.leftOut; }

  private:
    void readMaterials();
    std::shared_ptr<Texture> readPicture(int picture, const platform::MeshMaterial& material);

    platform::MeshFile file_;
    std::vector<Geometry> triangles_;
    std::vector<Material> materials_;
    std::vector<Part> parts_;
    std::vector<glm::mat4> pose_;
    ModelBox box_;
    std::vector<std::string> missing_;
};

}  // namespace multiscene
