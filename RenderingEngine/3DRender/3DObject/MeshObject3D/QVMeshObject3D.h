#pragma once

#include <array>
#include <vector>

#include "core/QVObject3DTextureBase.h"
#include "painter/Draw.h"

namespace multiscene {

extern const KeyTable meshKeys;
/// The size and place of a mesh.
extern const KeyTable meshInfoKeys;

/// A flat piece of a mesh with the whole texture on it, seen from the side that its normal points to.
struct MeshFace {
    std::array<float, 12> corners;  ///< as those of a quad, counter-clockwise
    glm::vec3 normal;
};

/// A convex shape of faces, lit by the node's or the scene's lights when the node is lit, with a texture or,
/// without one, in one colour. A mesh itself has no faces and draws nothing: planes and cubes do.
class QVMeshObject3D : public QVObject3DTextureBase {
  public:
    const char* className() const override { return "QVMeshObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

    const std::vector<MeshFace>& faces() const { return faces_; }

  protected:
    void draw(Painter& painter) override;
    /// The size of "MeshInfo" and its centre, in model units.
    struct Box {
        glm::vec3 size{0}, centre{0};
    };
    virtual std::vector<MeshFace> facesOf(const Box&) const { return {}; }
    /// The face of the box that looks along the axis (0 x, 1 y, 2 z) in the direction -1 or 1.
    static MeshFace boxFace(const Box& box, int axis, float direction);

  private:
    bool isOpaque() const;
    void makeTriangles();

    std::vector<MeshFace> faces_;
    std::vector<MeshVertex> outside_, inside_;
    std::array<float, 8> coordinates_{};  ///< those that the triangles were made with
};

}  // namespace multiscene
