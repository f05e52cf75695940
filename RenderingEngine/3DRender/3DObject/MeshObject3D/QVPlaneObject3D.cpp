#include "3DObject/MeshObject3D/QVPlaneObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

static constexpr Key planeKeyList[] = {
    {.name = "PlaneObject3DInfo",
     .type = KeyType::Dictionary,
     .meaning = "size and place, instead of \"MeshInfo\"",
     .children = &meshInfoKeys},
};
constexpr KeyTable planeKeys{"QVPlaneObject3D", "A flat rectangle that takes light.", &meshKeys,
                             planeKeyList};

QV_REGISTER_NODE_TYPE(QVPlaneObject3D, planeKeys);

void QVPlaneObject3D::rendInfoWithDic(const platform::Value& info) {
    const platform::Value own = KeyReader(planeKeys, info).value("PlaneObject3DInfo");
    QVMeshObject3D::rendInfoWithDic(own ? info.with("MeshInfo", own) : info);
}

std::vector<MeshFace> QVPlaneObject3D::facesOf(const Box& box) const {
    Box flat = box;
    flat.size.z = 0;
    return {boxFace(flat, 2, 1)};
}

}  // namespace multiscene
