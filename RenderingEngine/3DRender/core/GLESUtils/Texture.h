// What draws sample: a picture in memory, in GL, or both, whichever the painter needs.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "core/GLESUtils/GLObject.h"
#include "platform/image/Image.h"
#include "platform/pixels/FilmPicture.h"
#include "platform/pixels/Surface.h"

namespace multiscene {

/// A picture, or several of falling size that show the same. Nothing to draw until it is given one. Render
/// queue; glName() needs the GL context current, nothing else does.
class Texture {
  public:
    Texture() = default;
    Texture(Texture&&) = default;
    Texture& operator=(Texture&&) = default;

    /// A picture with colours multiplied by alpha.
    void setPicture(platform::Bitmap picture);
    /// The same picture in falling sizes, each half of the one before, at least one. `premultiplied`: colours
    /// are multiplied by alpha.
    void setLevels(std::vector<platform::Bitmap> levels, bool premultiplied);
    /// A film's picture, which is not copied.
    void setFrame(std::shared_ptr<const platform::FilmPicture> frame, bool premultiplied);
    /// Memory to paint in, with colours multiplied by alpha, kept alive by `owner`; bottom row first, as GL
    /// keeps what it draws. The next glName() uploads what it holds then.
    void setPainted(const platform::Surface& memory, std::shared_ptr<const void> owner);
    /// GL draws into it: the GL texture is what there is, with colours multiplied by alpha.
    GLTexture& setDrawnByGL(int width, int height);
    void clear() { *this = Texture(); }

    bool isEmpty() const { return levels_.empty() && !gl_; }
    /// Of the largest picture, pixels; known wherever it is.
    int width() const { return width_; }
    int height() const { return height_; }
    bool isOpaque() const { return isOpaque_; }
    /// Shows one picture for as long as its memory lives: no film and nothing painted.
    bool isStill() const { return isStill_; }
    /// Colours are multiplied by alpha; those of some films and of PVR pictures are not.
    bool isPremultiplied() const { return isPremultiplied_; }
    /// In memory, the largest first; none where GL has drawn it, or has taken it over.
    std::span<const platform::Surface> levels() const;
    /// The same; a film's picture may be without pixels yet, for who can do without.
    std::span<const platform::Surface> levelsOrFilm() const { return levels_; }
    /// Keeps that memory as it is.
    const std::shared_ptr<const void>& memoryOwner() const { return owner_; }

    /// The GL texture, up to date; 0 for nothing to draw.
    unsigned int glName();
    /// Gives the memory up: GL has the picture and nobody else wants it.
    void dropMemory();

  private:
    void setMemory(std::vector<platform::Surface> levels, std::shared_ptr<const void> owner);
    void upload();

    mutable std::vector<platform::Surface> levels_;  ///< a film gets its pixels when somebody wants them
    std::shared_ptr<const void> owner_;
    bool isOpaque_ = false, isPremultiplied_ = true, isStill_ = false;
    int width_ = 0, height_ = 0;
    GLTexture gl_;
    int glWidth_ = 0, glHeight_ = 0;  ///< of a GL texture with one level, for updates in place
    bool isStale_ = false;            ///< GL does not have what is in memory
};

}  // namespace multiscene
