#include "core/GLESUtils/TextureUpload.h"

#include <epoxy/gl.h>

#include <vector>

#include "core/GLESUtils/PixelRows.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

namespace {

const platform::GLCaps& caps() { return platform::GLContext::current()->caps(); }

/// A picture as the driver takes it: as it lies in memory where possible, else a tight copy.
class AcceptedPicture {
  public:
    explicit AcceptedPicture(const platform::Surface& picture) : pixels_(picture.pixels) {
        const bool swap = !caps().bgraUpload;
        const bool padded = picture.stride != picture.width * 4;
        format_ = swap ? GL_RGBA : GL_BGRA_EXT;
        if (swap || (padded && (picture.stride < 0 || !caps().rowLength)))
            copy(picture, swap);
        else if (padded)
            rowLength_ = static_cast<GLint>(picture.stride / 4);
        if (rowLength_) glPixelStorei(GL_UNPACK_ROW_LENGTH, rowLength_);
    }
    ~AcceptedPicture() {
        if (rowLength_) glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    }
    AcceptedPicture(const AcceptedPicture&) = delete;
    AcceptedPicture& operator=(const AcceptedPicture&) = delete;

    const uint8_t* pixels() const { return pixels_; }
    GLenum format() const { return format_; }

  private:
    void copy(const platform::Surface& picture, bool swap) {
        const size_t rowBytes = static_cast<size_t>(picture.width) * 4;
        copy_.resize(rowBytes * static_cast<size_t>(picture.height));
        for (int row = 0; row < picture.height; ++row)
            copyPixels(picture.pixels + row * picture.stride,
                       copy_.data() + static_cast<size_t>(row) * rowBytes, picture.width, swap);
        pixels_ = copy_.data();
    }

    const uint8_t* pixels_;
    GLenum format_ = GL_RGBA;
    GLint rowLength_ = 0;
    std::vector<uint8_t> copy_;
};

void setFilters(int levels) {
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, levels > 1 ? GL_LINEAR_MIPMAP_NEAREST : GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    // A chain that ends early is complete all the same.
    if (caps().majorVersion >= 3) glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, levels - 1);
}

}  // namespace

void setTextureWrap(TextureWrap wrap) {
    const GLint wanted = wrap == TextureWrap::Repeat ? GL_REPEAT : GL_CLAMP_TO_EDGE;
    for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}) {
        GLint current = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, axis, &current);
        if (current != wanted) glTexParameteri(GL_TEXTURE_2D, axis, wanted);
    }
}

void uploadTexture(unsigned int texture, std::span<const platform::Surface> levels) {
    glBindTexture(GL_TEXTURE_2D, texture);
    setFilters(static_cast<int>(levels.size()));
    GLint number = 0;
    for (const platform::Surface& level : levels) {
        const AcceptedPicture accepted(level);
        glTexImage2D(GL_TEXTURE_2D, number++, static_cast<GLint>(accepted.format()), level.width,
                     level.height, 0, accepted.format(), GL_UNSIGNED_BYTE, accepted.pixels());
    }
}

void updateTexture(unsigned int texture, const platform::Surface& picture) {
    glBindTexture(GL_TEXTURE_2D, texture);
    const AcceptedPicture accepted(picture);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture.width, picture.height, accepted.format(),
                    GL_UNSIGNED_BYTE, accepted.pixels());
}

}  // namespace multiscene
