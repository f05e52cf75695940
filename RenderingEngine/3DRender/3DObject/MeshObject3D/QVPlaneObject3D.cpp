#include "3DObject/MeshObject3D/QVPlaneObject3D.h"

#include "core/NodeTypes.h"

namespace multiscene {

constexpr KeyTable planeKeys{"QVPlaneObject3D", "A flat rectangle that takes light.", &meshKeys, {}};

QV_REGISTER_NODE_TYPE(QVPlaneObject3D, planeKeys);

std::vector<MeshFace> QVPlaneObject3D::facesOf(const Box& box) const {
    Box flat = box;
    flat.size.z = 0;
    return {boxFace(flat, 2, 1)};
}

}  // namespace multiscene
