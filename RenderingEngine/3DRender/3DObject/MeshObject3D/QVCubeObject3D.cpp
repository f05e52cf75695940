#include "3DObject/MeshObject3D/QVCubeObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

static constexpr Key cubeKeyList[] = {
    {.name = "MeshInfo", .type = KeyType::Dictionary, .meaning = "size and place", .children = &meshInfoKeys},
};
constexpr KeyTable cubeKeys{"QVCubeObject3D", "A box that takes light.", &meshKeys, cubeKeyList};

QV_REGISTER_NODE_TYPE(QVCubeObject3D, cubeKeys);

void QVCubeObject3D::readShape(const platform::Value& info) {
    const Box box = boxOf(info["MeshInfo"]);
    std::vector<MeshVertex> corners;
    for (int axis = 0; axis < 3; ++axis)
        for (const float direction : {-1.0f, 1.0f}) addSide(box, axis, direction, corners);
    setTriangles(std::move(corners));
}

}  // namespace multiscene
