#include "3DObject/MeshObject3D/MeshModel.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "3DObject/MeshObject3D/MeshPose.h"
#include "core/Material/ZBTexture.h"
#include "platform/base/FileGate.h"
#include "platform/base/Limits.h"
#include "platform/image/ImageDecoder.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using Alpha = platform::MeshMaterial::Alpha;

namespace {

platform::MeshFile readThrough(platform::FileGate& gate, const std::string& path) {
    const auto opened = gate.open(path);
    if (!opened.file)
        throw Error(ErrorKind::Template,
                    opened.verdict == platform::FileGate::Verdict::Missing
                        ? "does not exist"
                        : platform::describe(opened.verdict),
                    path);
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return platform::readMeshFile(
        opened.file, path, [&](const std::string& name) { return std::move(gate.open(folder / name).file); });
}

/// Sides are powers of two, so that the picture may repeat itself; many pictures are smaller.
platform::ImageSize canvasOf(platform::ImageSize picture, size_t pictures) {
    constexpr size_t few = 8, many = 24;
    const int share = pictures <= few ? 1 : pictures <= many ? 2 : 4;
    const int most = platform::limitOf<int>("maxMeshPictureSide") / share;
    const auto side = [&](int pixels) {
        return std::min(ZBTexture::minimumSizedTextureSize(static_cast<float>(pixels)), most);
    };
    return {side(picture.width), side(picture.height)};
}

/// What alpha means to the material. Colours are multiplied by it, and stay so.
void applyAlpha(const platform::MeshMaterial& material, platform::Bitmap& picture) {
    if (material.alpha == Alpha::Blend) return;
    const auto least = static_cast<int>(std::lround(std::clamp(material.cutOff, 0.0f, 1.0f) * 255));
    for (size_t i = 0; i < picture.rgba.size(); i += 4) {
        uint8_t* texel = &picture.rgba[i];
        const int alpha = texel[3];
        if (alpha == 255) continue;
        const bool isSeen = material.alpha == Alpha::Opaque || alpha >= least;
        for (int k = 0; k < 3; ++k)
            texel[k] = static_cast<uint8_t>(isSeen && alpha > 0 ? std::min(255, texel[k] * 255 / alpha) : 0);
        texel[3] = isSeen ? 255 : 0;
    }
}

}  // namespace

MeshModel::MeshModel(const std::string& path, platform::FileGate& gate) : file_(readThrough(gate, path)) {
    readMaterials();
    for (platform::MeshPart& part : file_.parts) {
        std::vector<MeshVertex> corners;
        corners.reserve(part.corners.size());
        for (const platform::MeshCorner& corner : part.corners)
            corners.push_back({.position = {corner.place[0], corner.place[1], corner.place[2]},
                               .normal = {corner.normal[0], corner.normal[1], corner.normal[2]},
                               .textureCoordinate = {corner.texture[0], corner.texture[1]}});
        part.corners = {};
        triangles_.emplace_back(std::move(corners));
    }
    setPose(nullptr, 0);
    for (size_t node = 0; node < file_.nodes.size(); ++node)
        for (const int index : file_.nodes[node].parts) {
            const platform::MeshPart& part = file_.parts[static_cast<size_t>(index)];
            Geometry& triangles = triangles_[static_cast<size_t>(index)];
            parts_.push_back(
                {&triangles, &materials_[static_cast<size_t>(part.material)], node, part.isSmooth});
            if (triangles.isEmpty()) continue;
            const ModelBox& box = triangles.box();
            for (int corner = 0; corner < 8; ++corner) {
                const glm::vec3 at(corner & 1 ? box.most.x : box.least.x,
                                   corner & 2 ? box.most.y : box.least.y,
                                   corner & 4 ? box.most.z : box.least.z);
                box_.add(glm::vec3(pose_[node] * glm::vec4(at, 1)));
            }
        }
    std::stable_partition(parts_.begin(), parts_.end(),
                          [](const Part& part) { return part.material->isOpaque; });
}

void MeshModel::readMaterials() {
    for (const platform::MeshMaterial& info : file_.materials) {
        Material& material = materials_.emplace_back();
        material.info = info;
        material.picture = readPicture(info.picture, info);
        material.emissionPicture = readPicture(info.emissionPicture, {});
        if (info.alpha == Alpha::Opaque) material.info.color.alpha = 1;
        material.isOpaque =
            material.info.color.alpha >= 1 && (!material.picture || material.picture->isOpaque());
    }
}

std::shared_ptr<Texture> MeshModel::readPicture(int picture, const platform::MeshMaterial& material) {
    if (picture < 0) return nullptr;
    const platform::MeshPicture& source = file_.pictures[static_cast<size_t>(picture)];
    try {
        if (!source.file) throw Error(ErrorKind::Template, "is missing", source.name);
        const platform::ImageSource blamed{source.name, ErrorKind::Template};
        platform::Bitmap bitmap = platform::decodeImage(
            source.file,
            {.canvas = canvasOf(platform::readImageSize(source.file, blamed), file_.pictures.size()),
             .source = blamed});
        applyAlpha(material, bitmap);
        auto texture = std::make_shared<Texture>();
        texture->setPicture(std::move(bitmap));
        return texture;
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Transient) throw;
        const std::string name = source.name.empty() ? "a picture in the mesh" : source.name;
        if (std::ranges::find(missing_, name) == missing_.end()) missing_.push_back(name);
        return nullptr;
    }
}

void MeshModel::setPose(const platform::MeshAnimation* animation, double seconds) {
    pose_ = poseOf(file_, animation, seconds);
}

const platform::MeshAnimation* MeshModel::animation(const std::string& name) const {
    for (const platform::MeshAnimation& animation : file_.animations)
        if (name.empty() || animation.name == name) return &animation;
    return nullptr;
}

bool MeshModel::hasMaterial(const std::string& name) const {
    return std::ranges::any_of(materials_,
                               [&](const Material& material) { return material.info.name == name; });
}

}  // namespace multiscene
