#pragma once

#include <cstdint>
#include <string>

#include "core/GLESUtils/Texture.h"
#include "core/Material/QVTextureMaterial.h"
#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"
#include "platform/base/Value.h"
#include "platform/image/Image.h"
#include "playback/PicturesAhead.h"

namespace multiscene {

class QVMultiSceneRenderShareSettings;
class QVMultiScene2DTextDataModel;
class TextPictureCopy;

/// How a picture file is stored; other numbers load nothing.
enum class ImageType : uint32_t { Picture = 0, Pvr = 2 };

/// The room that a picture takes at most when it is drawn, in pixels of the frame; 0: unknown.
struct ShownBox {
    double width = 0, height = 0;
    bool isCovered = false;  ///< the picture keeps its proportions and overhangs the box
};

/// One texture and the size of the picture behind it. Render queue.
///
/// Pictures are drawn stretched over a canvas whose sides are powers of two of at least 64 pixels, so texture
/// coordinates run from 0 to 1; a canvas is never larger than maxCanvasSide, nor, where that is known, than
/// the picture is shown, since drawing picks single pixels out of what it shrinks. Files are opened through
/// the fence; a relative name lies in the program's resources. Anything that cannot be loaded leaves the
/// texture empty.
class ZBTexture {
  public:
    static constexpr int maxCanvasSide = platform::limitOf<int>("maxCanvasSide");          ///< pixels
    static constexpr int maxTextBitmapSide = platform::limitOf<int>("maxTextBitmapSide");  ///< pixels
    static constexpr int filterPhotoSide = 1024;  ///< pixels: the longer side of a photo that is filtered

    /// Empty: nothing to draw.
    const std::shared_ptr<Texture>& texture() const { return texture_; }
    /// Pixels of the source picture, before any rounding: what a quad is fitted to.
    const TextureSize& textureContentSize() const { return textureContentSize_; }
    /// A picture file. Glossary: "loadload" is load.
    void loadloadTexture(const std::string& path, platform::FileGate& gate, const ShownBox& shown = {});
    /// What makes a picture file ready to be shown; runs on any thread while the gate lives.
    static PictureOnCanvas picture(const std::string& path, platform::FileGate& gate, const ShownBox& shown);
    /// Shows what picture() or filteredPicture() has made.
    void show(PictureOnCanvas picture);
    /// A PVR version 2 file, plain or gzip-compressed.
    void loadTextureFromPvr(const std::string& path, platform::FileGate& gate);
    /// A file of the given kind.
    void loadPicture(const std::string& path, ImageType imageType, platform::FileGate& gate,
                     const ShownBox& shown = {});
    /// A photo shaped by the "filterType" of the dictionary. It is brought to filterPhotoSide before, so that
    /// its radii and strokes look the same on a photo of any size. Any thread while `settings` live.
    static PictureOnCanvas filteredPicture(const std::string& path, const std::string& sceneRootPath,
                                           const platform::Value& filterInfo,
                                           const QVMultiSceneRenderShareSettings& settings,
                                           platform::FileGate& gate, const ShownBox& shown);
    /// A text, kept as `copy` keeps it; returns where it lies in the texture. Texts beyond maxTextBitmapSide
    /// are drawn smaller.
    QVTextureMaterial::TextureCoordinates loadTextureFrom2DTextDadaModel(
        const QVMultiScene2DTextDataModel& model, TextPictureCopy& copy);

    /// The canvas side for a picture side, computed in single precision: the next power of two, at least 64.
    static int minimumSizedTextureSize(float side);
    /// The photo, already of the canvas's size, as the filter shapes it; its overlay is found as a scene with
    /// this resource folder finds files.
    static platform::Bitmap filterWithOriginalImage(const platform::Bitmap& originalImage,
                                                    const std::string& sceneRootPath,
                                                    const platform::Value& filterInfo,
                                                    const QVMultiSceneRenderShareSettings& settings,
                                                    platform::FileGate& gate);

  private:
    static platform::FileHandle openFile(const std::string& path, platform::FileGate& gate);
    /// The size that a picture is to count as; none: its own.
    using SizeOnCanvas = platform::ImageSize (*)(platform::ImageSize);
    /// The picture on its canvas; empty when it cannot be read.
    static PictureOnCanvas decodeOntoCanvas(const std::string& path, platform::FileGate& gate,
                                            const ShownBox& shown, SizeOnCanvas sizeOnCanvas = nullptr);

    std::shared_ptr<Texture> texture_ = std::make_shared<Texture>();
    TextureSize textureContentSize_;
};

}  // namespace multiscene
