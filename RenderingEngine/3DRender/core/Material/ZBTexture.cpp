#include "core/Material/ZBTexture.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "core/Material/PhotoFilterKeys.h"
#include "dataMode/QVMultiScene2DTextDataModel.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/base/Paths.h"
#include "platform/image/BitmapStretch.h"
#include "platform/image/ImageDecoder.h"
#include "platform/image/PhotoFilter.h"
#include "platform/image/PvrPictures.h"
#include "playback/TextPictureCopy.h"

namespace multiscene {

namespace {

constexpr float minCanvasSide = 64;

int canvasSide(int pictureSide) {
    return std::min(ZBTexture::minimumSizedTextureSize(static_cast<float>(pictureSide)),
                    ZBTexture::maxCanvasSide);
}

platform::ImageSize canvasOf(platform::ImageSize picture, const ShownBox& shown) {
    const platform::ImageSize canvas{canvasSide(picture.width), canvasSide(picture.height)};
    if (!(shown.width > 0 && shown.height > 0)) return canvas;
    double width = shown.width, height = shown.height;
    if (shown.isCovered) {
        const double factor = std::max(width / picture.width, height / picture.height);
        width = picture.width * factor, height = picture.height * factor;
    }
    const auto side = [](double wanted, int most) {
        return wanted < most ? std::max(static_cast<int>(minCanvasSide), static_cast<int>(std::ceil(wanted)))
                             : most;
    };
    return {side(width, canvas.width), side(height, canvas.height)};
}

/// A picture file stretched to a size; empty when it cannot be read.
platform::Bitmap decodeStretched(const platform::FileHandle& file, const std::string& name,
                                 platform::ImageSize size) {
    try {
        return platform::decodeImage(file, {.canvas = size, .source = {.name = name}});
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        return {};
    }
}

platform::ImageSize filteredSize(platform::ImageSize photo) {
    const double factor =
        static_cast<double>(ZBTexture::filterPhotoSide) / std::max(photo.width, photo.height);
    return {static_cast<int>(std::lround(photo.width * factor)),
            static_cast<int>(std::lround(photo.height * factor))};
}

platform::Color colorOf(const glm::vec4& color) { return {color.r, color.g, color.b, color.a}; }

}  // namespace

int ZBTexture::minimumSizedTextureSize(float side) {
    if (!(side > minCanvasSide)) return static_cast<int>(minCanvasSide);
    return static_cast<int>(std::exp2(std::floor(std::log2(side - 1)) + 1));
}

void ZBTexture::show(PictureOnCanvas picture) {
    textureContentSize_ = {static_cast<double>(picture.source.width),
                           static_cast<double>(picture.source.height)};
    if (!picture.bitmap.isEmpty()) texture_->setPicture(std::move(picture.bitmap));
}

platform::FileHandle ZBTexture::openFile(const std::string& path, platform::FileGate& gate) {
    if (path.empty()) return {};
    const std::filesystem::path file(path);
    return gate.open(file.is_absolute() ? file : platform::resourcesFolder() / file).file;
}

PictureOnCanvas ZBTexture::decodeOntoCanvas(const std::string& path, platform::FileGate& gate,
                                            const ShownBox& shown, SizeOnCanvas sizeOnCanvas) {
    const platform::FileHandle file = openFile(path, gate);
    if (!file) return {};
    try {
        const platform::ImageSize size = platform::readImageSize(file, {.name = path});
        const platform::ImageSize counted = sizeOnCanvas ? sizeOnCanvas(size) : size;
        platform::Bitmap canvas = decodeStretched(file, path, canvasOf(counted, shown));
        if (canvas.isEmpty()) return {};
        return {std::move(canvas), size};
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        return {};
    }
}

void ZBTexture::loadloadTexture(const std::string& path, platform::FileGate& gate, const ShownBox& shown) {
    show(picture(path, gate, shown));
}

PictureOnCanvas ZBTexture::picture(const std::string& path, platform::FileGate& gate, const ShownBox& shown) {
    return decodeOntoCanvas(path, gate, shown);
}

void ZBTexture::loadPicture(const std::string& path, ImageType imageType, platform::FileGate& gate,
                            const ShownBox& shown) {
    if (imageType == ImageType::Picture) loadloadTexture(path, gate, shown);
    if (imageType == ImageType::Pvr) loadTextureFromPvr(path, gate);
}

void ZBTexture::loadTextureFromPvr(const std::string& path, platform::FileGate& gate) {
    const platform::FileHandle opened = openFile(path, gate);
    if (!opened) return;
    try {
        const platform::PvrFile file(platform::readFile(opened, path, platform::PvrFile::maxBytes));
        textureContentSize_ = {static_cast<double>(file.width()), static_cast<double>(file.height())};
        std::vector<platform::Bitmap> pictures = platform::pvrPictures(file);
        if (!pictures.empty()) texture_->setLevels(std::move(pictures), false);
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        // Unreadable: the texture stays empty.
    }
}

// Filters

platform::Bitmap ZBTexture::filterWithOriginalImage(const platform::Bitmap& originalImage,
                                                    const std::string& sceneRootPath,
                                                    const platform::Value& filterInfo,
                                                    const QVMultiSceneRenderShareSettings& settings,
                                                    platform::FileGate& gate) {
    const KeyReader reader(photoFilterKeys, filterInfo);
    const platform::PhotoFilter filter{.type = reader.text("filterType"),
                                       .cornerRadius = reader.number("circularR"),
                                       .strokeWidth = reader.number("strokeW"),
                                       .strokeColor = colorOf(reader.vector4("strokeColor"))};
    platform::Bitmap overlay;
    const std::string overlayPath =
        settings.multiSceneRenderPathResourcesWithString(reader.text("maskPhotoName"), sceneRootPath);
    if (const platform::FileHandle file = openFile(overlayPath, gate))
        overlay = decodeStretched(file, overlayPath, originalImage.size());
    return platform::drawPhotoFilter(filter, originalImage, overlay.isEmpty() ? nullptr : &overlay);
}

PictureOnCanvas ZBTexture::filteredPicture(const std::string& path, const std::string& sceneRootPath,
                                           const platform::Value& filterInfo,
                                           const QVMultiSceneRenderShareSettings& settings,
                                           platform::FileGate& gate, const ShownBox& shown) {
    const PictureOnCanvas photo = decodeOntoCanvas(path, gate, {}, filteredSize);
    if (photo.bitmap.isEmpty()) return {};
    platform::Bitmap shaped =
        filterWithOriginalImage(photo.bitmap, sceneRootPath, filterInfo, settings, gate);
    const platform::ImageSize canvas = canvasOf(photo.bitmap.size(), shown);
    return {canvas == shaped.size() ? std::move(shaped) : averaged(shaped, canvas), photo.source};
}

// Texts

QVTextureMaterial::TextureCoordinates ZBTexture::loadTextureFrom2DTextDadaModel(
    const QVMultiScene2DTextDataModel& model, TextPictureCopy& copy) {
    const platform::TextSize size = model.textureSize();
    const int width = minimumSizedTextureSize(static_cast<float>(size.width));
    const int height = minimumSizedTextureSize(static_cast<float>(size.height));
    const int longest = std::max(width, height);
    const double scale = longest > maxTextBitmapSide ? static_cast<double>(maxTextBitmapSide) / longest : 1;
    platform::Bitmap bitmap =
        model.drawText(static_cast<int>(width * scale), static_cast<int>(height * scale), scale);
    copy.write(bitmap);
    if (!bitmap.isEmpty()) texture_->setPicture(std::move(bitmap));
    textureContentSize_ = {size.width, size.height};
    const auto right = static_cast<float>(size.width / width);
    const auto bottom = static_cast<float>(size.height / height);
    return {0, bottom, right, bottom, right, 0, 0, 0};
}

}  // namespace multiscene
