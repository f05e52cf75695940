#include "core/GLESUtils/PvrUpload.h"

#include <epoxy/gl.h>

#include <algorithm>

#include "core/GLESUtils/PixelRows.h"
#include "core/GLESUtils/PvrtcDecoder.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

namespace {

const platform::GLCaps& caps() { return platform::GLContext::current()->caps(); }

struct UploadFormat {
    GLenum format, type;
};

UploadFormat uploadFormat(PvrFormat format) {
    switch (format) {
        case PvrFormat::Rgba4444:
            return {GL_RGBA, GL_UNSIGNED_SHORT_4_4_4_4};
        case PvrFormat::Rgba5551:
            return {GL_RGBA, GL_UNSIGNED_SHORT_5_5_5_1};
        case PvrFormat::Rgb565:
            return {GL_RGB, GL_UNSIGNED_SHORT_5_6_5};
        case PvrFormat::Rgb888:
            return {GL_RGB, GL_UNSIGNED_BYTE};
        case PvrFormat::Luminance8:
            return {GL_LUMINANCE, GL_UNSIGNED_BYTE};
        case PvrFormat::LuminanceAlpha88:
            return {GL_LUMINANCE_ALPHA, GL_UNSIGNED_BYTE};
        case PvrFormat::Bgra8888:
            return {GLenum(caps().bgraUpload ? GL_BGRA_EXT : GL_RGBA), GL_UNSIGNED_BYTE};
        case PvrFormat::Alpha8:
            return {GL_ALPHA, GL_UNSIGNED_BYTE};
        case PvrFormat::Rgba8888:
        case PvrFormat::Pvrtc2:
        case PvrFormat::Pvrtc4:
            break;
    }
    return {GL_RGBA, GL_UNSIGNED_BYTE};
}

/// The level's pixels when they are not those of the file.
std::vector<uint8_t> convertedPixels(const PvrFile& file, const PvrLevel& level) {
    if (file.format() == PvrFormat::Pvrtc2 || file.format() == PvrFormat::Pvrtc4) {
        const PvrtcBits bits = file.format() == PvrFormat::Pvrtc2 ? PvrtcBits::Two : PvrtcBits::Four;
        return decodePvrtc(level.data, level.width, level.height, bits, file.hasAlphaMask());
    }
    if (file.format() != PvrFormat::Bgra8888 || caps().bgraUpload) return {};
    std::vector<uint8_t> swapped(level.data.begin(), level.data.end());
    copyPixels(swapped.data(), swapped.data(), level.width * level.height, true);
    return swapped;
}

void setFilters(const PvrFile& file) {
    const bool mipMaps = file.levels().size() > 1;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, mipMaps ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    // A chain that ends early is complete all the same.
    if (caps().majorVersion >= 3)
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(file.levels().size()) - 1);
}

}  // namespace

bool uploadPvr(GLTexture& texture, const PvrFile& file) {
    if (file.levels().empty() || int(std::max(file.width(), file.height())) > caps().maxTextureSize)
        return false;
    texture.create();
    glBindTexture(GL_TEXTURE_2D, texture.name());
    setFilters(file);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    const auto [format, type] = uploadFormat(file.format());
    GLint number = 0;
    for (const PvrLevel& level : file.levels()) {
        const std::vector<uint8_t> converted = convertedPixels(file, level);
        glTexImage2D(GL_TEXTURE_2D, number++, static_cast<GLint>(format), level.width, level.height, 0,
                     format, type, converted.empty() ? level.data.data() : converted.data());
    }
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    return true;
}

}  // namespace multiscene
