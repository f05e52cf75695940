#include "app/template/TemplateLength.h"

#include <algorithm>

#include "group/SceneGroup.h"

namespace multiscene {

namespace {

/// Knows the scenes of one template, whether it is installed or not, and asks another for the rest.
class RecordCatalogue : public SceneCatalogue {
  public:
    RecordCatalogue(const std::vector<QVTempletDataModel>& records, SceneCatalogue* others)
        : records_(records), others_(others) {}

    std::optional<SceneConfigData> querySceneWithSid(int64_t sId) override {
        for (const QVTempletDataModel& record : records_)
            if (record.sId() == sId)
                return SceneConfigData{.sId = sId,
                                       .scenePlistPath = {},
                                       .sceneResourceFolderPath = {},
                                       .fpsLength = record.fpsLength(),
                                       .sourceType = record.sourceType(),
                                       .photoTotal = record.photoTotal(),
                                       .sceneName = {}};
        return others_ ? others_->querySceneWithSid(sId) : std::nullopt;
    }

  private:
    const std::vector<QVTempletDataModel>& records_;
    SceneCatalogue* others_;
};

}  // namespace

int64_t lengthInFrames(const std::vector<QVTempletDataModel>& records, SceneCatalogue* others) {
    const auto& entries = records.front().sceneGroup();
    if (entries.empty()) return records.front().fpsLength();
    RecordCatalogue own(records, others);
    return SceneGroup{entries, {}, scenesNamedBy(entries, own)}.totalFrames();
}

int64_t photosWanted(const UserInputList& inputs) {
    return std::count_if(inputs.begin(), inputs.end(),
                         [](const auto& input) { return input->userInputType() == 1; });
}

int64_t photosWanted(const QVTempletDataModel& record) {
    return std::max(record.photoTotal(), photosWanted(record.userInputInfo()));
}

}  // namespace multiscene
