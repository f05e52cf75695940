#include "app/preview/MomentFinder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <glm/glm.hpp>
#include <limits>
#include <optional>
#include <set>
#include <vector>

#include "app/preview/NodeValues.h"
#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "platform/base/DispatchQueue.h"

namespace multiscene {

using platform::Value;

namespace {

constexpr double kHalfHidden = 0.5;  // of what is seen in a transition
constexpr double kMotion = 25;       // how much less a node counts that moves by the picture's height a frame
constexpr double kAlmostAsGood = 0.85;
constexpr double kSizeUnknown = 0.1;  // share of the picture, of what does not tell its corners

/// A part of the picture, which reaches from -1 to 1 both ways.
struct Box {
    std::vector<glm::dvec2> corners;
    glm::dvec2 least{std::numeric_limits<double>::max()}, most{std::numeric_limits<double>::lowest()};

    void include(const glm::dvec2& point) {
        least = glm::min(least, point);
        most = glm::max(most, point);
        corners.push_back(point);
    }
    /// The share of the picture that the shape with these corners covers, about.
    double share() const {
        const glm::dvec2 side = glm::min(most, glm::dvec2(1)) - glm::max(least, glm::dvec2(-1));
        return side.x > 0 && side.y > 0 ? side.x * side.y / 4 * filled() : 0;
    }
    /// The share of the box that it covers: a turned shape has a larger box.
    double filled() const {
        double twice = 0;
        for (size_t i = 0; i < corners.size(); ++i) {
            const glm::dvec2 &one = corners[i], &other = corners[(i + 1) % corners.size()];
            twice += one.x * other.y - other.x * one.y;
        }
        const double box = (most.x - least.x) * (most.y - least.y);
        return box > 0 ? std::min(std::abs(twice) / 2 / box, 1.0) : 0;
    }
    double distanceTo(const Box& other) const {
        return std::max(glm::length(least - other.least), glm::length(most - other.most)) / 2;
    }
};

/// Where a node is seen; none when it lies behind the eye.
std::optional<Box> boxOf(QVObjectContainer3D& node, const Value::Dictionary& fields) {
    Box box;
    const auto add = [&](const glm::vec3& corner) {
        const glm::vec4 at = node.projTransform() * glm::vec4(corner, 1);
        if (at.w > 0) box.include(glm::dvec2(at.x, at.y) / static_cast<double>(at.w));
    };
    if (const auto vertices = fields.find("vertices"); vertices != fields.end()) {
        const auto& numbers = vertices->second.array();
        for (size_t i = 0; i + 2 < numbers.size(); i += 3)
            add({numbers[i].floatValue(), numbers[i + 1].floatValue(), numbers[i + 2].floatValue()});
    } else {
        add(glm::vec3(0));
    }
    return box.least.x > box.most.x ? std::nullopt : std::optional(box);
}

double opacityOf(const Value::Dictionary& fields) {
    const auto number = [](const Value& value) { return value.isNumber() ? value.doubleValue() : 1; };
    const auto alpha = fields.find("sceneAlpha");
    const auto values = fields.find("values");
    return (alpha == fields.end() ? 1 : number(alpha->second)) *
           (values == fields.end() ? 1 : number(values->second["renderAlpha"]));
}

/// In the middle of the longest time in which it is almost as good as it gets.
int64_t bestOf(const std::map<int64_t, double>& scores) {
    double most = 0;
    for (const auto& [frame, score] : scores) most = std::max(most, score);
    int64_t first = -1, last = -1, bestFirst = -1, bestLast = -2;
    for (const auto& [frame, score] : scores) {
        if (score <= 0 || score < kAlmostAsGood * most) continue;
        if (last < 0 || frame != last + 1) first = frame;
        last = frame;
        if (last - first > bestLast - bestFirst) bestFirst = first, bestLast = last;
    }
    return bestFirst < 0 ? -1 : (bestFirst + bestLast) / 2;
}

}  // namespace

/// Of the run; its callbacks may outlive the finder.
struct MomentFinder::Watch {
    std::set<std::string> keys;
    std::function<void(const Moments&)> found;                // main thread
    std::map<std::string, std::map<int64_t, double>> scores;  ///< by key and frame
    std::map<const void*, Box> before;
    int64_t frames = 0;

    void look(int64_t frame, const RenderDriver& driver) {
        frames = frame + 1;
        std::map<const void*, Box> now;
        const bool isAlone = driver.sceneRenderType() == SceneRenderType::Single;
        for (const auto& scene : {driver.currentScene(), driver.nextScene(), driver.transitionsScene()})
            if (scene && (scene != driver.nextScene() || !isAlone))
                lookAt(scene->children(), scene->currentRenderTime().value, frame, isAlone ? 1 : kHalfHidden,
                       now);
        before = std::move(now);
    }

    void lookAt(const QVObjectContainer3D::Children& nodes, int64_t time, int64_t frame, double weight,
                std::map<const void*, Box>& now) {
        for (const auto& node : nodes) {
            if (!node->visible()) continue;
            const std::string key = shownKeyOf(*node);
            const auto* ranged = dynamic_cast<const QVObject3DFpsBase*>(node.get());
            if (keys.contains(key) && ranged && ranged->isDueAt(time)) judge(*node, key, frame, weight, now);
            lookAt(node->children(), time, frame, weight, now);
        }
    }

    void judge(QVObjectContainer3D& node, const std::string& key, int64_t frame, double weight,
               std::map<const void*, Box>& now) {
        Value::Dictionary fields;
        node.addTraceFields(fields);
        const auto box = boxOf(node, fields);
        if (!box) return;
        now[&node] = *box;
        const auto known = before.find(&node);
        const double moved = known == before.end() ? 1 : box->distanceTo(known->second);
        const bool isKnown = fields.contains("vertices");
        const double share = isKnown ? box->share() : isInside(*box) ? kSizeUnknown : 0;
        double& score = scores[key][frame];
        score = std::max(score, weight * share * opacityOf(fields) / (1 + kMotion * moved));
    }

    static bool isInside(const Box& box) {
        return box.least.x >= -1 && box.most.x <= 1 && box.least.y >= -1 && box.most.y <= 1;
    }

    /// On the main queue.
    void tell() {
        if (!found) return;
        Moments moments;
        for (const std::string& key : keys) {
            const int64_t best = bestOf(scores[key]);
            moments[key] = best < 0 ? frames / 2 : best;
        }
        std::exchange(found, nullptr)(moments);
    }
};

MomentFinder::MomentFinder(const PreparedGroup& group, std::function<void(const Moments&)> found)
    : watch_(std::make_shared<Watch>()) {
    for (const auto& input : group.playable.inputs) watch_->keys.insert(input->renderMapKey());
    watch_->found = std::move(found);
    RenderDriverSettings settings;
    settings.bufferWidth = group.layout.drawnWidth;
    settings.bufferHeight = group.layout.drawnHeight;
    settings.renderer = Renderer::Software;
    driver_ =
        QVMultiSceneRenderManager::initWithFrameSink(group.playback->twin(), nullptr, nullptr, settings);
    driver_->setFrameSampleBlock(
        [watch = watch_, driver = driver_.get()](int64_t frame) { watch->look(frame, *driver); });
    player_ = QVMediaManage::initWithRenderManager(driver_, false);
    player_->setIsRec(true);
    const auto end = [watch = watch_] { platform::DispatchQueue::main().async([watch] { watch->tell(); }); };
    player_->setOnSceneGroupRenderingCompleteBlock(end);
    // Whatever ends it: the run that is seen tells what is wrong.
    player_->setOnSceneGroupRenderingFailedBlock([end](const platform::Error&) { end(); });
    player_->loadSceneGroup(group.group);
}

MomentFinder::~MomentFinder() { watch_->found = nullptr; }

}  // namespace multiscene
