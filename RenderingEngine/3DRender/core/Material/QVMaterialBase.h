#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "format/TypeRegistry.h"
#include "platform/base/Value.h"

namespace multiscene {

class Playback;
class QVObject3DFpsBase;
class QVScene3D;

/// The numbers that materials carry; a video has the number of a picture sequence.
enum class MaterialType : uint32_t { Image = 0, Text = 2, RenderTarget = 3, TextureSerial = 4, Video = 4 };

/// What a material is made with.
struct MaterialContext {
    std::shared_ptr<QVScene3D> scene;
    QVObject3DFpsBase* object3D = nullptr;  ///< the drawable that will own the material
    std::string textureObjectPath;          ///< the file to show, empty for none
    int64_t textureSerialStartFps = 0;      ///< the drawable's first and last frame
    int64_t textureSerialEndFps = 0;
};

struct ShownBox;

/// What a drawable samples. Owned by its drawable; render queue.
///   construction     opens nothing
///   expectPicture    of another one like it, before its drawable is shown
///   loadMaterial     once, after construction
///   updateMaterial   before each draw
///   destroyMaterial  at the drawable's last frame; may run twice
class QVMaterialBase {
  public:
    virtual ~QVMaterialBase() = default;

    /// A loaded material of the dictionary's "textureType", or none for another type.
    static std::shared_ptr<QVMaterialBase> loadTextureWithDic(const platform::Value& textureInfo,
                                                              const MaterialContext& context);

    MaterialType materialType() const { return materialType_; }
    /// The drawable outlives its material.
    void setObject3D(QVObject3DFpsBase* object3D) { object3D_ = object3D; }
    QVObject3DFpsBase* object3D() const { return object3D_; }

    /// The most room that the drawable gives its picture; nothing where that cannot be told.
    ShownBox largestShownBox() const;

    /// Has the picture made ahead that loadMaterial() will want of a material made the same way.
    static void expectPictureWithDic(const platform::Value& textureInfo, const MaterialContext& context);
    virtual void expectPicture() {}
    virtual void loadMaterial() {}
    virtual void destroyMaterial() {}
    virtual void updateMaterial(int64_t /*frame*/) {}

  protected:
    /// Of the drawable's scene; none outside of one.
    Playback* playback() const;
    /// What the drawable's picture is expected and taken by.
    std::string pictureName(const std::string& path) const;
    explicit QVMaterialBase(MaterialType materialType = MaterialType::Image) : materialType_(materialType) {}
    /// Notes a picture or video that could not be shown: `path`, or, when the file is not there, the
    /// "texture" of the dictionary.
    void reportSkippedPicture(const std::string& path, const platform::Value& textureInfo) const;

  private:
    MaterialType materialType_;
    QVObject3DFpsBase* object3D_ = nullptr;
};

/// Material types by "textureType". A class registers its makers beside its code.
using MaterialTypes =
    TypeRegistry<QVMaterialBase, const platform::Value& /*textureInfo*/, const MaterialContext&>;

}  // namespace multiscene
