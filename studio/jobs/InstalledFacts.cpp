#include "studio/jobs/InstalledFacts.h"

#include "app/Model/QVUserTextInputModel.h"
#include "app/catalogue/TemplateOverview.h"

namespace multiscene::studio {

namespace {

TemplateFacts::Input inputOf(const QVUserInputModelBase& model) {
    TemplateFacts::Input input;
    input.key = model.renderMapKey();
    input.kind = model.userInputType() == 0 ? "text" : model.userInputType() == 1 ? "photo" : "video";
    input.label = model.placeholder();
    if (const auto* text = dynamic_cast<const QVUserTextInputModel*>(&model)) {
        input.maxCharacters = text->maxLenght();
        input.maxLines = text->maxLine();
    }
    return input;
}

TemplateFacts factsOf(const TemplateOverview& overview) {
    TemplateFacts facts;
    facts.id = overview.sId;
    facts.title = overview.title;
    facts.source = overview.isInstalled ? std::to_string(overview.sId) : overview.folder;
    facts.folder = overview.folder;
    facts.frames = overview.frames;
    facts.framesPerSecond = overview.format.framesPerSecond;
    facts.width = overview.format.width;
    facts.height = overview.format.height;
    for (const auto& input : overview.inputs) facts.inputs.push_back(inputOf(*input));
    return facts;
}

}  // namespace

FindTemplate installedFacts() {
    return [](int64_t id, const std::string&) -> std::optional<TemplateFacts> {
        QVDataManager catalogue;
        const QVDownloadInfoManager server;
        const auto overview = findTemplateOverview(catalogue, server, std::to_string(id));
        if (!overview || (!overview->isInstalled && !overview->isSample)) return std::nullopt;
        return factsOf(*overview);
    };
}

}  // namespace multiscene::studio
