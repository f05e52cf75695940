#pragma once

#include <array>
#include <memory>
#include <string>

#include "core/Material/QVMaterialBase.h"
#include "core/QVObject3DTransformBase.h"
#include "platform/base/FileGate.h"

namespace multiscene {

class QVTextureMaterial;
class Texture;
struct ShownBox;

extern const KeyTable textureBaseKeys;

/// A node that is drawn with a material. The material is made at the node's first frame, never earlier, and
/// given up at its last, so that a long film holds few textures at a time: a node that is first updated after
/// its first frame stays without one.
class QVObject3DTextureBase : public QVObject3DTransformBase {
  public:
    const char* className() const override { return "QVObject3DTextureBase"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;

    /// The file behind the "texture" of the texture info: the user's value of that name, else the name itself
    /// with its macros resolved. Empty when there is no such file or it may not be opened.
    std::string computeTexturePath() const;
    void loadTexture();
    /// Shows what the texture info says now, as if it had said so from the node's first frame on.
    void reloadTexture();
    /// What loadTexture() will show is made ahead where that can be done; refused files are told by
    /// loadTexture() alone.
    void expectPicture();
    /// The most room that the picture takes when it is drawn; nothing where that cannot be told beforehand.
    virtual ShownBox largestShownBox();
    /// The same, as it was when the picture that is shown was loaded first.
    ShownBox loadedShownBox();
    /// Called when a material has been loaded: subclasses fit themselves to it. Glossary: "finish".
    virtual void loadTextureFinsh() {}
    /// Replaces the material with a PVR picture of the scene's folder.
    void reloadTextureFromPvr(const std::string& name);

    QVMaterialBase* material() const { return material_.get(); }
    /// The material when it has a texture, else none.
    QVTextureMaterial* textureMaterial() const { return textureMaterial_; }
    const platform::Value& textureInfo() const { return textureInfo_; }
    /// What is drawn; none without a material that has one.
    Texture* texture() const;
    /// Four times u, v: bottom left, bottom right, top right, top left.
    const std::array<float, 8>& masterTextureCoordinates() const;

  protected:
    bool isCompletedAt(int64_t frame) const override { return visible() && isDueAt(frame); }
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    void setMaterial(std::shared_ptr<QVMaterialBase> material);
    /// What a material of this node is made with, given the file that it shows.
    MaterialContext materialContext(std::string path);

  private:
    std::string texturePathThrough(platform::FileGate& gate) const;

    platform::Value textureInfo_;
    std::shared_ptr<QVMaterialBase> material_;
    std::shared_ptr<const ShownBox> loadedBox_;  ///< of the first loading
    bool isReloading_ = false;
    QVTextureMaterial* textureMaterial_ = nullptr;  // material_ again
};

}  // namespace multiscene
