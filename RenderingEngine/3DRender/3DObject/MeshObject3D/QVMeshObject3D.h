#pragma once

#include <memory>
#include <string>

#include "3DObject/MeshObject3D/MeshModel.h"
#include "animation/AnimatedNumber.h"
#include "core/QVObject3DTextureBase.h"
#include "painter/Draw.h"

namespace multiscene {

extern const KeyTable meshKeys;
/// The size and place of a plane or cube.
extern const KeyTable meshInfoKeys;

/// A surface that is lit by the node's or the scene's lights when the node is lit. This class shows a mesh
/// file, with its own materials and animation, or with the node's texture on one of them; subclasses bring
/// shapes that show the node's texture or, without one, its colour.
///
/// The file is read at the node's first frame and given up at its last. Its animation is played by the number
/// of frames since the first: a second of the file takes as many frames as the scene's clock counts in one
/// ("videoFps").
class QVMeshObject3D : public QVObject3DTextureBase {
  public:
    const char* className() const override { return "QVMeshObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;

  protected:
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override { opacity_.updateData(frame, *this); }
    void draw(Painter& painter) override;

    /// Reads the shape from the node's dictionary: once, at configuration.
    virtual void readShape(const platform::Value& info);

    /// What a surface's triangles are, whatever is on them.
    struct Shape {
        std::span<const MeshVertex> corners;
        Geometry* kept = nullptr;
        MeshSides sides = MeshSides::Outer;
        bool isSmooth = false, comparesDepths = false;
        float opacity = 1;
    };
    /// Draws them with the node's texture or colour, or nothing without one. Their texture coordinates are
    /// places on the picture: 0 to 1 from its upper left corner.
    void drawShape(Painter& painter, const Shape& shape);
    /// Whether the texture or colour hides what is behind it.
    bool isOpaque() const;

    /// Two triangles for each side of a box, or of a plane.
    struct Box {
        glm::vec3 size{0}, centre{0};
    };
    static Box boxOf(const platform::Value& meshInfo);
    /// Appends the side that looks along the axis (0 x, 1 y, 2 z) in the direction -1 or 1.
    static void addSide(const Box& box, int axis, float direction, std::vector<MeshVertex>& corners);
    void setTriangles(std::vector<MeshVertex> corners) { triangles_ = Geometry(std::move(corners)); }

  private:
    /// How a mesh file is shown.
    struct Showing {
        std::string file;          ///< as the scene file names it; empty: none
        float size = 0;            ///< of the longest side of its box, model units; 0: the file's own
        std::string origin;        ///< what lies at the node's place
        std::string animation;     ///< empty: the first
        double speed = 1;          ///< 2: twice as fast
        bool loops = true;         ///< else it stays as it ends
        std::string texturedPart;  ///< the material that shows the node's texture; empty: all
    };
    void loadModel();
    void moveModel(int64_t frame);
    void drawModel(Painter& painter);
    /// From the file's coordinates to the node's.
    glm::mat4 placeOfModel() const;
    MeshDraw drawOf(const MeshModel::Part& part);
    bool showsOwnTexture(const MeshModel::Material& material) const;

    Geometry triangles_;  ///< of a shape
    AnimatedNumber opacity_{1};
    Showing showing_;
    std::unique_ptr<MeshModel> model_;
    glm::mat4 place_{1};
};

}  // namespace multiscene
