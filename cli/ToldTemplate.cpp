#include "cli/ToldTemplate.h"

#include <charconv>

#include "platform/base/Error.h"
#include "platform/base/Limits.h"
#include "platform/fence/Message.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

constexpr const char *kRecord = "record", *kInfo = "info";
constexpr size_t kPiece = platform::Message::maxBytes / 2;
/// Of all records together.
constexpr size_t kMostBytes = platform::limitOf<size_t>("maxToldBytes");

constexpr size_t kFields = 11;

int64_t numberOf(const std::string& field) {
    int64_t number = 0;
    std::from_chars(field.data(), field.data() + field.size(), number);
    return number;
}

}  // namespace

void tellRecords(const TemplateFolder& folder, const Workplace& place) {
    for (size_t index = 0; index < folder.records.size(); ++index) {
        const QVTempletDataModel& record = folder.records[index];
        const std::vector<std::string> fields{kRecord,
                                              std::to_string(record.sId()),
                                              record.scenePlistPath(),
                                              record.sceneResourceFolderPath(),
                                              std::to_string(record.fpsLength()),
                                              record.sceneName(),
                                              std::to_string(record.sourceType()),
                                              std::to_string(record.photoTotal()),
                                              record.sceneThumbnailPath(),
                                              record.videoPreviewUrl(),
                                              record.youtubePreviewUrl()};
        size_t bytes = 0;
        for (const std::string& field : fields) bytes += field.size();
        if (bytes > kPiece)
            throw Error(ErrorKind::Template, "holds longer texts than the catalogue keeps",
                        folder.plistPath().string(), "installScenes[" + std::to_string(index) + "]");
        place.ask(fields);
        const std::string info = record.dataBaseWechartTempletInfo();
        for (size_t at = 0; at < info.size(); at += kPiece) place.ask({kInfo, info.substr(at, kPiece)});
    }
}

ToldTemplate::ToldTemplate(std::string name, std::filesystem::path folder) {
    told_.name = std::move(name);
    told_.folder = std::move(folder);
}

void ToldTemplate::hear(const std::vector<std::string>& request) {
    for (const std::string& field : request) bytes_ += field.size();
    if (bytes_ > kMostBytes || told_.records.size() > platform::limitOf("maxRecords"))
        throw Error(ErrorKind::Template, "tells more of its scenes than can be kept", told_.name);
    if (request.size() == kFields && request[0] == kRecord) return hearRecord(request);
    if (request.size() == 2 && request[0] == kInfo && !told_.records.empty()) return hearInfo(request[1]);
    throw Error(ErrorKind::Failed, "what the worker says cannot be understood", told_.name);
}

void ToldTemplate::hearRecord(const std::vector<std::string>& fields) {
    finishInfo();
    QVTempletDataModel record;
    record.setSId(numberOf(fields[1]));
    record.setScenePlistPath(fields[2]);
    record.setSceneResourceFolderPath(fields[3]);
    record.setFpsLength(numberOf(fields[4]));
    record.setSceneName(fields[5]);
    record.setSourceType(numberOf(fields[6]));
    record.setPhotoTotal(numberOf(fields[7]));
    record.setSceneThumbnailPath(fields[8]);
    record.setVideoPreviewUrl(fields[9]);
    record.setYoutubePreviewUrl(fields[10]);
    told_.records.push_back(std::move(record));
}

void ToldTemplate::hearInfo(const std::string& piece) { info_ += piece; }

void ToldTemplate::finishInfo() {
    if (!info_.empty()) told_.records.back().setDataBaseWechartTempletInfo(std::move(info_));
    info_.clear();
}

const TemplateFolder& ToldTemplate::folder() {
    finishInfo();
    if (told_.records.empty()) throw Error(ErrorKind::Failed, "the worker has told no scene", told_.name);
    return told_;
}

}  // namespace multiscene::cli
