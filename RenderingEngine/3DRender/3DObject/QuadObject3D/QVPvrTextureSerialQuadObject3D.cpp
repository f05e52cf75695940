#include "3DObject/QuadObject3D/QVPvrTextureSerialQuadObject3D.h"

#include "format/NodeTypes.h"

namespace multiscene {

static constexpr Key pvrSerialKeyList[] = {
    {.name = "PvrTextureSerialInfo",
     .type = KeyType::Dictionary,
     .meaning = "the pictures",
     .required = true,
     .children = &pictureSequenceKeys},
};
constexpr KeyTable pvrSerialKeys{"QVPvrTextureSerialQuadObject3D", "A quad that shows numbered PVR pictures.",
                                 &quadKeys, pvrSerialKeyList};

QV_REGISTER_NODE_TYPE(QVPvrTextureSerialQuadObject3D, pvrSerialKeys);

void QVPvrTextureSerialQuadObject3D::rendInfoWithDic(const platform::Value& info) {
    QVQuadObject3D::rendInfoWithDic(info);
    sequence_.emplace(KeyReader(pvrSerialKeys, info).value("PvrTextureSerialInfo"));
}

void QVPvrTextureSerialQuadObject3D::updateDue(const Tick& tick) {
    QVQuadObject3D::updateDue(tick);
    const auto name =
        sequence_ ? sequence_->animationWithCurrentFps(tick.frame, sartFps(), endFps()) : std::nullopt;
    if (!name || *name == shownName_) return;
    reloadTextureFromPvr(*name);
    shownName_ = *name;
}

}  // namespace multiscene
