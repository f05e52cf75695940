#include "app/Other/TemplateLength.h"

#include <algorithm>

#include "other/QVMultiSceneGropPlistFileManager.h"
#include "other/SceneCatalogue.h"

namespace multiscene {

namespace {

/// Knows the scenes of one template, whether it is installed or not, and asks another for the rest.
class RecordCatalogue : public SceneCatalogue {
  public:
    RecordCatalogue(const std::vector<QVTempletDataModel>& records, std::shared_ptr<SceneCatalogue> others)
        : records_(records), others_(std::move(others)) {}

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
    std::shared_ptr<SceneCatalogue> others_;
};

/// Puts a catalogue in the shared one's place for the length of a block.
class CatalogueInstead {
  public:
    explicit CatalogueInstead(const std::vector<QVTempletDataModel>& records)
        : before_(SceneCatalogue::shared()) {
        SceneCatalogue::setShared(std::make_shared<RecordCatalogue>(records, before_));
    }
    ~CatalogueInstead() { SceneCatalogue::setShared(before_); }
    CatalogueInstead(const CatalogueInstead&) = delete;
    CatalogueInstead& operator=(const CatalogueInstead&) = delete;

  private:
    std::shared_ptr<SceneCatalogue> before_;
};

}  // namespace

int64_t lengthInFrames(const std::vector<QVTempletDataModel>& records) {
    const auto& entries = records.front().sceneGroup();
    if (entries.empty()) return records.front().fpsLength();
    const CatalogueInstead own(records);
    return totalFpsOfSceneGroup(entries, platform::Value::Dictionary());
}

int64_t photosWanted(const UserInputList& inputs) {
    return std::count_if(inputs.begin(), inputs.end(),
                         [](const auto& input) { return input->userInputType() == 1; });
}

int64_t photosWanted(const QVTempletDataModel& record) {
    return std::max(record.photoTotal(), photosWanted(record.userInputInfo()));
}

}  // namespace multiscene
