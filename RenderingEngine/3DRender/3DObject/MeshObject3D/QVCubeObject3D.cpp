#include "3DObject/MeshObject3D/QVCubeObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

constexpr KeyTable cubeKeys{"QVCubeObject3D", "A box that takes light.", &meshKeys, {}};

QV_REGISTER_NODE_TYPE(QVCubeObject3D, cubeKeys);

std::vector<MeshFace> QVCubeObject3D::facesOf(const Box& box) const {
    std::vector<MeshFace> faces;
    for (int axis = 0; axis < 3; ++axis)
        for (const float direction : {-1.0f, 1.0f}) faces.push_back(boxFace(box, axis, direction));
    return faces;
}

}  // namespace multiscene
