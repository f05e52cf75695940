#include "platform/face/FaceCascade.h"

#include <cmath>
#include <pugixml.hpp>
#include <sstream>

#include "platform/base/Error.h"

namespace platform {

namespace {

template <typename Number>
std::vector<Number> numbersOf(const pugi::xml_node& node) {
    std::istringstream text(node.child_value());
    text.imbue(std::locale::classic());
    std::vector<Number> numbers;
    for (Number number; text >> number;) numbers.push_back(number);
    return numbers;
}

}  // namespace

RectangleSums::RectangleSums(const GreyPicture& picture)
    : width_(picture.width + 1),
      height_(picture.height + 1),
      sums_(size_t(width_) * size_t(height_)),
      squares_(sums_.size()) {
    const uint8_t* pixel = picture.pixels.data();
    for (int y = 1; y < height_; ++y) {
        int32_t sum = 0;
        int64_t square = 0;
        for (int x = 1; x < width_; ++x) {
            const int value = *pixel++;
            const size_t at = size_t(y) * size_t(width_) + size_t(x);
            sums_[at] = sums_[at - size_t(width_)] + (sum += value);
            squares_[at] = squares_[at - size_t(width_)] + (square += value * value);
        }
    }
}

FaceCascade::FaceCascade(const std::filesystem::path& file) {
    pugi::xml_document document;
    if (!document.load_file(file.c_str())) throw Error(ErrorKind::Failed, "cannot be read", file.string());
    const pugi::xml_node cascade = document.child("opencv_storage").child("cascade");
    width_ = cascade.child("width").text().as_int();
    height_ = cascade.child("height").text().as_int();
    for (const pugi::xml_node& entry : cascade.child("features")) {
        Feature& feature = features_.emplace_back();
        for (const pugi::xml_node& rectangle : entry.child("rects"))
            if (const auto n = numbersOf<double>(rectangle); n.size() == 5 && feature.count < 3)
                feature.rectangles[size_t(feature.count++)] = {int(n[0]), int(n[1]), int(n[2]), int(n[3]),
                                                               float(n[4])};
    }
    for (const pugi::xml_node& entry : cascade.child("stages")) {
        Stage& stage = stages_.emplace_back();
        stage.threshold = entry.child("stageThreshold").text().as_float();
        for (const pugi::xml_node& weak : entry.child("weakClassifiers")) {
            Tree& tree = stage.trees.emplace_back();
            const auto n = numbersOf<double>(weak.child("internalNodes"));
            for (size_t i = 0; i + 3 < n.size(); i += 4)
                tree.nodes.push_back({int(n[i]), int(n[i + 1]), int(n[i + 2]), float(n[i + 3])});
            tree.leaves = numbersOf<float>(weak.child("leafValues"));
        }
    }
    requireConsistent(file);
}

void FaceCascade::requireConsistent(const std::filesystem::path& file) const {
    bool isSound = !stages_.empty() && width_ > 2 && height_ > 2;
    for (const Feature& feature : features_)
        for (int i = 0; i < feature.count; ++i) {
            const Rectangle& r = feature.rectangles[size_t(i)];
            isSound &= r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0 && r.x + r.width <= width_ &&
                       r.y + r.height <= height_;
        }
    for (const Stage& stage : stages_)
        for (const Tree& tree : stage.trees) {
            isSound &= !tree.nodes.empty();
            for (size_t i = 0; i < tree.nodes.size(); ++i) {
                const Node& node = tree.nodes[i];
                for (const int child : {node.left, node.right})
                    isSound &= child > 0 ? size_t(child) > i && size_t(child) < tree.nodes.size()
                                         : size_t(-child) < tree.leaves.size();
                isSound &= node.feature >= 0 && size_t(node.feature) < features_.size();
            }
        }
    if (!isSound) throw Error(ErrorKind::Failed, "is no trained data for faces", file.string());
}

float FaceCascade::valueOf(const Tree& tree, const RectangleSums& picture, int x, int y,
                           float contrast) const {
    int next = 0;
    do {
        const Node& node = tree.nodes[size_t(next)];
        const Feature& feature = features_[size_t(node.feature)];
        float value = 0;
        for (int i = 0; i < feature.count; ++i) {
            const Rectangle& r = feature.rectangles[size_t(i)];
            value += r.weight * float(picture.sum(x + r.x, y + r.y, r.width, r.height));
        }
        next = value < node.threshold * contrast ? node.left : node.right;
    } while (next > 0);
    return tree.leaves[size_t(-next)];
}

bool FaceCascade::accepts(const RectangleSums& picture, int x, int y) const {
    const int innerWidth = width_ - 2, innerHeight = height_ - 2;
    const auto sum = double(picture.sum(x + 1, y + 1, innerWidth, innerHeight));
    const auto squares = double(picture.squares(x + 1, y + 1, innerWidth, innerHeight));
    const double area = double(innerWidth) * innerHeight, spread = area * squares - sum * sum;
    // A plain surface shows nothing.
    if (spread < 100 * area * area) return false;
    const auto contrast = float(std::sqrt(spread));
    for (const Stage& stage : stages_) {
        float total = 0;
        for (const Tree& tree : stage.trees) total += valueOf(tree, picture, x, y, contrast);
        if (total < stage.threshold) return false;
    }
    return true;
}

}  // namespace platform
