#include "app/check/TemplateView.h"

namespace multiscene {

std::set<std::string> GroupView::identifiers() const {
    std::set<std::string> identifiers;
    for (const platform::Value& entry : entries)
        if (const std::string identifier = entry.string("sceneIdentifier"); !identifier.empty())
            identifiers.insert(identifier);
    return identifiers;
}

const SceneView* GroupView::scene(int64_t number) const {
    const auto found = scenes.find(number);
    return found == scenes.end() ? nullptr : &found->second;
}

const platform::Value& TemplateView::inputs() const {
    static const platform::Value none;
    return records().empty() ? none : records()[0]["wechartTempletInfo"];
}

}  // namespace multiscene
