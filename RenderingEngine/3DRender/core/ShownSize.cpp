#include "core/ShownSize.h"

#include <algorithm>
#include <cmath>

#include "core/QVScene3D.h"
#include "core/carmera/QVCamera3D.h"
#include "playback/RenderDriver.h"

namespace multiscene {

namespace {

constexpr double overshoot = 0.5;  // eases that swing go beyond their ends by less
constexpr int64_t firstPathEase = 30000;

double largestOf(const glm::vec3& scale) {
    return std::max({std::abs(scale.x), std::abs(scale.y), std::abs(scale.z)});
}

/// Nothing for an ease that is a path of the template's.
std::optional<double> largestBetween(const glm::vec3& start, const glm::vec3& end, int64_t ease) {
    if (ease >= firstPathEase || ease < 0) return std::nullopt;
    const glm::vec3 swing = (end - start) * static_cast<float>(overshoot);
    return std::max({largestOf(start), largestOf(end), largestOf(end + swing), largestOf(start - swing)});
}

/// Items of a sequence take turns.
std::optional<double> largestOfSequence(const std::vector<TransformItem>& items, const glm::vec3& own) {
    double largest = largestOf(own);
    for (const TransformItem& item : items) {
        if (item.texture) return std::nullopt;
        const glm::vec3 start = item.scale.start.value_or(own);
        const auto scale = largestBetween(start, item.scale.end.value_or(start), item.scale.ease);
        if (!scale) return std::nullopt;
        largest = std::max(largest, *scale);
    }
    return largest;
}

/// Independent items may all hold at once.
std::optional<double> largestOfIndependent(const std::vector<MutableTransformItem>& items) {
    double largest = 1;
    for (const MutableTransformItem& item : items) {
        if (item.type != MutableTransformItem::Type::Scale) continue;
        const auto scale = largestBetween(item.move.start, item.move.end, item.move.ease);
        if (!scale) return std::nullopt;
        largest *= std::max(1.0, *scale);
    }
    return largest;
}

std::optional<double> largestScaleOf(QVObject3DTransformBase& node) {
    const bool isPlacedByOthers = node.preposeMatrix4() != glm::mat4(1) || node.postMatrix4() != glm::mat4(1);
    if (isPlacedByOthers) return std::nullopt;
    const auto sequence = largestOfSequence(node.transformArray(), node.scale());
    const auto independent = largestOfIndependent(node.mutableTransformArray());
    if (!sequence || !independent) return std::nullopt;
    return *sequence * *independent;
}

}  // namespace

std::optional<double> mostPixelsAUnit(QVObject3DTransformBase& node) {
    const auto scene = node.scene();
    const auto camera = node.camera() ? node.camera() : scene ? scene->camera() : nullptr;
    if (!scene || !camera || camera->isPerspectiveCamera3D()) return std::nullopt;
    const glm::mat4& projection = camera->getPpTransform();
    const RenderDriver& driver = scene->renderManager();
    double pixels = std::max(std::abs(projection[0][0]) * static_cast<float>(driver.bufferWidth()),
                             std::abs(projection[1][1]) * static_cast<float>(driver.bufferHeight())) /
                    2;
    for (std::shared_ptr<QVObjectContainer3D> keep; QVObjectContainer3D* at = keep ? keep.get() : &node;) {
        auto* placed = dynamic_cast<QVObject3DTransformBase*>(at);
        const auto scale = placed ? largestScaleOf(*placed) : std::nullopt;
        if (!scale) return std::nullopt;
        pixels *= *scale;
        keep = at->parent();
        if (!keep) break;
    }
    return std::isfinite(pixels) && pixels > 0 ? std::optional(pixels) : std::nullopt;
}

}  // namespace multiscene
