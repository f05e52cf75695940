#include "core/GLESUtils/PvrUpload.h"
#include "core/Material/ZBTexture.h"

namespace multiscene {

void ZBTexture::loadTextureFromPvr(const std::string& path) {
    const platform::FileHandle opened = openFile(path);
    if (!opened) return;
    try {
        const PvrFile file(platform::readFile(opened, path, PvrFile::maxBytes));
        textureContentSize_ = {static_cast<double>(file.width()), static_cast<double>(file.height())};
        uploadPvr(texture_, file);
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        // Unreadable: the texture stays 0.
    }
}

}  // namespace multiscene
