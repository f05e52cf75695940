#include "platform/mesh/MeshFile.h"

#include "platform/base/Limits.h"
#include "platform/mesh/GltfFile.h"
#include "platform/mesh/ObjFile.h"

namespace platform {

MeshFile readMeshFile(const FileHandle& file, const std::string& name, const OpenBeside& openBeside) {
    const std::vector<uint8_t> bytes = readFile(file, name, limitOf("maxMeshFileBytes"), ErrorKind::Template);
    return looksLikeGltf(bytes) ? readGltf(bytes, name, openBeside) : readObj(bytes, name, openBeside);
}

}  // namespace platform
