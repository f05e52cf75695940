#include "core/GLESUtils/TextureUpload.h"

#include <epoxy/gl.h>

#include <vector>

#include "core/GLESUtils/PixelRows.h"
#include "platform/gl/GLContext.h"

namespace multiscene {

namespace {

const platform::GLCaps& caps() { return platform::GLContext::current()->caps(); }

/// The order in which the driver is given pixels of this order.
PixelOrder acceptedOrder(PixelOrder given) {
    if (!caps().bgraUpload) return PixelOrder::RGBA;
    return caps().drawsBgraFaster ? PixelOrder::BGRA : given;
}

/// A bitmap as the driver takes it: the caller's pixels where possible, else a tight copy.
class AcceptedBitmap {
  public:
    explicit AcceptedBitmap(const BitmapView& bitmap) : pixels_(bitmap.pixels) {
        const PixelOrder order = acceptedOrder(bitmap.order);
        const bool swap = order != bitmap.order;
        const bool padded = bitmap.stride != bitmap.width * 4;
        format_ = order == PixelOrder::BGRA ? GL_BGRA_EXT : GL_RGBA;
        if (swap || (padded && !(caps().rowLength && bitmap.stride % 4 == 0)))
            copy(bitmap, swap);
        else if (padded)
            rowLength_ = bitmap.stride / 4;
        if (rowLength_) glPixelStorei(GL_UNPACK_ROW_LENGTH, rowLength_);
    }
    ~AcceptedBitmap() {
        if (rowLength_) glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    }
    AcceptedBitmap(const AcceptedBitmap&) = delete;
    AcceptedBitmap& operator=(const AcceptedBitmap&) = delete;

    const uint8_t* pixels() const { return pixels_; }
    GLenum format() const { return format_; }

  private:
    void copy(const BitmapView& bitmap, bool swap) {
        const size_t rowBytes = static_cast<size_t>(bitmap.width) * 4;
        copy_.resize(rowBytes * static_cast<size_t>(bitmap.height));
        for (int row = 0; row < bitmap.height; ++row) {
            const uint8_t* from =
                bitmap.pixels + static_cast<size_t>(row) * static_cast<size_t>(bitmap.stride);
            uint8_t* to = copy_.data() + static_cast<size_t>(row) * rowBytes;
            copyPixels(from, to, bitmap.width, swap);
        }
        pixels_ = copy_.data();
    }

    const uint8_t* pixels_;
    GLenum format_ = GL_RGBA;
    int rowLength_ = 0;
    std::vector<uint8_t> copy_;
};

}  // namespace

void setTextureWrap(TextureWrap wrap) {
    const GLint wanted = wrap == TextureWrap::Repeat ? GL_REPEAT : GL_CLAMP_TO_EDGE;
    for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}) {
        GLint current = 0;
        glGetTexParameteriv(GL_TEXTURE_2D, axis, &current);
        if (current != wanted) glTexParameteri(GL_TEXTURE_2D, axis, wanted);
    }
}

void uploadTexture(unsigned int texture, const BitmapView& bitmap, TextureWrap wrap) {
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    setTextureWrap(wrap);
    const AcceptedBitmap accepted(bitmap);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(accepted.format()), bitmap.width, bitmap.height, 0,
                 accepted.format(), GL_UNSIGNED_BYTE, accepted.pixels());
}

void updateTexture(unsigned int texture, const BitmapView& bitmap) {
    glBindTexture(GL_TEXTURE_2D, texture);
    const AcceptedBitmap accepted(bitmap);
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, bitmap.width, bitmap.height, accepted.format(), GL_UNSIGNED_BYTE,
                    accepted.pixels());
}

}  // namespace multiscene
