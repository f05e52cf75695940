#include "3DObject/MeshObject3D/QVPlaneObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

static constexpr Key planeKeyList[] = {
    {.name = "MeshInfo", .type = KeyType::Dictionary, .meaning = "size and place", .children = &meshInfoKeys},
    {.name = "PlaneObject3DInfo",
     .type = KeyType::Dictionary,
     .meaning = "size and place, instead of \"MeshInfo\"",
     .children = &meshInfoKeys},
};
constexpr KeyTable planeKeys{"QVPlaneObject3D", "A flat rectangle that takes light.", &meshKeys,
                             planeKeyList};

QV_REGISTER_NODE_TYPE(QVPlaneObject3D, planeKeys);

void QVPlaneObject3D::readShape(const platform::Value& info) {
    const platform::Value& own = info["PlaneObject3DInfo"];
    Box flat = boxOf(own ? own : info["MeshInfo"]);
    flat.size.z = 0;
    std::vector<MeshVertex> corners;
    addSide(flat, 2, 1, corners);
    setTriangles(std::move(corners));
}

}  // namespace multiscene
