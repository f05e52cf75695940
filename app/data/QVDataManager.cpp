#include "app/data/QVDataManager.h"

#include <filesystem>

#include "platform/base/Error.h"
#include "platform/base/Json.h"
#include "platform/base/Log.h"
#include "platform/base/PartFile.h"
#include "platform/base/PartFolder.h"
#include "platform/base/PrivateFolder.h"

namespace multiscene {

using platform::Database;
using platform::Error;
using platform::Statement;

namespace {

constexpr const char* kTable = "signSceneTable";

// "ARCHAR" is how the files in use were made; SQLite reads it as text all the same.
constexpr const char* kCreate =
    "CREATE TABLE IF NOT EXISTS signSceneTable (row INTEGER PRIMARY KEY AUTOINCREMENT,sId INTEGER DEFAULT "
    "-1,scenePlistPath VARCHAR(255) DEFAULT ('') NOT NULL,sceneResourceFolderPath VARCHAR(255) DEFAULT ('') "
    "NOT "
    "NULL,photoTotal INTEGER DEFAULT 0,fpsLength INTEGER DEFAULT 0,sceneName VARCHAR(255) DEFAULT ('') NOT "
    "NULL,obligate ARCHAR(255) DEFAULT ('') NOT NULL,sourceType INTEGER DEFAULT 1,sceneThumbnailPath "
    "VARCHAR(255) DEFAULT ('') NOT NULL,videoPreviewUrl VARCHAR(255) DEFAULT ('') NOT NULL,youtubePreviewUrl "
    "VARCHAR(255) DEFAULT ('') NOT NULL,wechartTempletInfo TEXT DEFAULT ('') NOT NULL)";
constexpr const char* kInsert =
    "INSERT INTO signSceneTable (sId,scenePlistPath,sceneResourceFolderPath,fpsLength, "
    "sceneName,sourceType,photoTotal,sceneThumbnailPath,videoPreviewUrl,youtubePreviewUrl,wechartTempletInfo)"
    " "
    "VALUES (?,?,?,?,?,?,?,?,?,?,?)";
constexpr const char* kBySid = "SELECT * FROM signSceneTable WHERE sId = ? ORDER BY sId";
constexpr const char* kBySourceType = "SELECT * FROM signSceneTable WHERE sourceType = ? ORDER BY row";
constexpr const char* kAll = "SELECT * FROM signSceneTable ORDER BY row";
constexpr const char* kDelete = "DELETE FROM signSceneTable WHERE sId = ?";

std::string expandedPath(const Statement& row, const char* column, const std::string& scenePath) {
    return QVUtil::multiScenePathWithString(row.text(column), scenePath);
}

platform::Value inputDescription(const std::string& json) {
    if (json.empty()) return {};
    try {
        return platform::parseJson(json, kTable);
    } catch (const Error& failure) {
        platform::log::info(failure.what());
        return {};
    }
}

QVTempletDataModel modelOfRow(const Statement& row, const std::string& scenePath) {
    QVTempletDataModel model;
    model.setRowId(row.integer("row"));
    model.setSId(row.integer("sId"));
    model.setFpsLength(row.integer("fpsLength"));
    model.setSourceType(row.integer("sourceType"));
    model.setPhotoTotal(row.integer("photoTotal"));
    model.setSceneName(row.text("sceneName"));
    model.setVideoPreviewUrl(row.text("videoPreviewUrl"));
    model.setYoutubePreviewUrl(row.text("youtubePreviewUrl"));
    model.setScenePlistPath(expandedPath(row, "scenePlistPath", scenePath));
    model.setSceneResourceFolderPath(expandedPath(row, "sceneResourceFolderPath", scenePath));
    model.setSceneThumbnailPath(expandedPath(row, "sceneThumbnailPath", scenePath));
    model.copySelfDataModelFormDic(inputDescription(row.text("wechartTempletInfo")));
    return model;
}

void makeFolders() {
    try {
        QVUtil::createMultiSceneLocalPaths();
    } catch (const Error& failure) {
        throw platform::UnwritableDatabase(failure.kind(), failure.message(), failure.file());
    }
}

/// Throws platform::Error when a passing fault keeps that from being known: it is not as if there were none.
bool hasContent(const std::string& file) {
    std::error_code failure;
    const auto size = std::filesystem::file_size(file, failure);
    if (failure && platform::isPassing(failure.value()))
        throw platform::errnoError(failure.value(), "cannot be looked at", file);
    return !failure && size > 0;
}

/// What is recorded is in two files then, and can be read from both together only.
bool isBeingChanged(const std::string& database) {
    return hasContent(database + "-wal") || hasContent(database + "-journal");
}

/// With what a killed program has recorded beside the file, and nobody could bring into it since.
std::unique_ptr<Database> completed(const std::string& database) {
    const std::filesystem::path temporary = platform::privateTemporaryFolder();
    platform::removeAbandonedParts(temporary);
    const platform::PartFolder folder(temporary, "catalogue");
    const std::filesystem::path copy = folder.path() / "copy.db";
    for (const std::string part : {"", "-wal", "-journal"}) {
        std::error_code failure;
        if (hasContent(database + part))
            std::filesystem::copy_file(database + part, copy.string() + part, failure);
        if (failure) throw platform::errnoError(failure.value(), "cannot be copied", database + part);
    }
    return Database::ofImage(Database(copy).image(), database);
}

/// Without the input description: it lists a whole group, and is as long as there are scenes to look up.
SceneConfigData sceneOfRow(const Statement& row, const std::string& scenePath) {
    return {row.integer("sId"),
            expandedPath(row, "scenePlistPath", scenePath),
            expandedPath(row, "sceneResourceFolderPath", scenePath),
            row.integer("fpsLength"),
            row.integer("sourceType"),
            row.integer("photoTotal"),
            row.text("sceneName")};
}

std::function<std::string()>& copyMaker() {
    static std::function<std::string()> none;
    return none;
}

/// Holds a flag up for the length of a block.
class Raised {
  public:
    explicit Raised(bool& flag) : flag_(flag), before_(flag) { flag_ = true; }
    ~Raised() { flag_ = before_; }
    Raised(const Raised&) = delete;
    Raised& operator=(const Raised&) = delete;

  private:
    bool& flag_;
    bool before_;
};

}  // namespace

std::string QVDataManager::databasePath() { return QVUtil::dataPath() + "sceneDataBase" + ".db"; }

Database& QVDataManager::database() {
    if (database_) return *database_;
    if (copyMaker() && path_ == databasePath()) {
        unwritable_ = Error(platform::ErrorKind::Failed, "the catalogue can only be read here", path_);
        database_ = openedCopy();
        return *database_;
    }
    try {
        if (path_ == databasePath()) makeFolders();
        database_ = opened();
    } catch (const platform::UnwritableDatabase& failure) {
        if (failure.kind() == platform::ErrorKind::Transient && isBeingChanged(path_)) throw;
        unwritable_ = failure;
        database_ = openedForReading();
        platform::log::info(std::string("the catalogue can only be read: ") + failure.what());
    }
    return *database_;
}

std::unique_ptr<Database> QVDataManager::opened() const {
    auto opened = std::make_unique<Database>(path_);
    if (!opened->tableExists(kTable)) {
        opened->execute(kCreate);
        platform::log::info("made the table " + std::string(kTable) + " in " + path_);
    }
    return opened;
}

/// Where nothing can be written, what was installed can still be used; without a file, or one that was just
/// begun, there is nothing.
std::unique_ptr<Database> QVDataManager::openedForReading() const {
    if (hasContent(path_)) {
        auto found = isBeingChanged(path_) ? completed(path_) : Database::unchanging(path_);
        if (found->tableExists(kTable)) return found;
    }
    auto empty = std::make_unique<Database>(Database::kInMemory);
    empty->execute(kCreate);
    return empty;
}

std::unique_ptr<Database> QVDataManager::openedCopy() const {
    const std::string copy = copyMaker()();
    if (!copy.empty()) return Database::ofImage(copy, path_);
    auto empty = std::make_unique<Database>(Database::kInMemory);
    empty->execute(kCreate);
    return empty;
}

void QVDataManager::readCopies(std::function<std::string()> copy) { copyMaker() = std::move(copy); }

void QVDataManager::readAnew() {
    const std::lock_guard lock(mutex_);
    if (copyMaker() && path_ == databasePath()) database_.reset();
}

std::string QVDataManager::image() {
    const std::lock_guard lock(mutex_);
    return database().image();
}

Database& QVDataManager::writableDatabase() {
    Database& connection = database();
    if (unwritable_) throw Error(*unwritable_);
    return connection;
}

template <typename Result>
Result QVDataManager::logged(const char* action, Result onFailure, const std::function<Result()>& work,
                             Passing passing) {
    const std::lock_guard lock(mutex_);
    if (throwing_) return work();
    try {
        return work();
    } catch (const Error& failure) {
        if (passing == Passing::Thrown && failure.kind() == platform::ErrorKind::Transient) throw;
        platform::log::info(std::string(action) + ": " + failure.what());
        return onFailure;
    }
}

void QVDataManager::checkUsable() {
    const std::lock_guard lock(mutex_);
    database().checkIntegrity();
}

bool QVDataManager::isSignSceneHasWithSid(int64_t sId) {
    return logged<bool>("looking a scene up", false,
                        [&] { return database().prepare(kBySid).bind(1, sId).step(); });
}

int64_t QVDataManager::insert(const QVTempletDataModel& model) {
    if (isSignSceneHasWithSid(model.sId())) {
        platform::log::info("scene " + std::to_string(model.sId()) + " is in the catalogue already");
        return -1;
    }
    Statement statement = database().prepare(kInsert);
    statement.bind(1, model.sId())
        .bind(2, model.scenePlistPath())
        .bind(3, model.sceneResourceFolderPath())
        .bind(4, model.fpsLength())
        .bind(5, model.sceneName())
        .bind(6, model.sourceType())
        .bind(7, model.photoTotal())
        .bind(8, model.sceneThumbnailPath())
        .bind(9, model.videoPreviewUrl())
        .bind(10, model.youtubePreviewUrl())
        .bind(11, model.dataBaseWechartTempletInfo());
    statement.step();
    return model.sId();
}

int64_t QVDataManager::insertSignSceneDataWithSignSceneDataModel(const QVTempletDataModel& model) {
    return logged<int64_t>("storing a scene", -1, [&] {
        int64_t stored = -1;
        // Asking and inserting belong together: another process may be installing the same scene.
        writableDatabase().transaction([&] { stored = insert(model); });
        return stored;
    });
}

int QVDataManager::installMultiSceneTemplate(const platform::Value& info) {
    int added = 0;
    for (const platform::Value& scene : info.array("installScenes")) {
        const auto model = QVTempletDataModel::templetDataModelWithDic(scene);
        if (insertSignSceneDataWithSignSceneDataModel(model) != -1) ++added;
    }
    return added;
}

std::vector<QVTempletDataModel> QVDataManager::signSceneArrayWithFMResultSet(Statement rows) {
    std::vector<QVTempletDataModel> models;
    while (rows.step()) models.push_back(modelOfRow(rows, scenePath_));
    return models;
}

std::vector<QVTempletDataModel> QVDataManager::queryCSignSceneDataWithSid(int64_t sId) {
    return logged<std::vector<QVTempletDataModel>>("looking a scene up", {}, [&] {
        Statement query = database().prepare(kBySid);
        query.bind(1, sId);
        return signSceneArrayWithFMResultSet(std::move(query));
    });
}

std::vector<QVTempletDataModel> QVDataManager::queryCSignSceneDataWithSourceType(int64_t sourceType) {
    return logged<std::vector<QVTempletDataModel>>("listing scenes", {}, [&] {
        Statement query = database().prepare(kBySourceType);
        query.bind(1, sourceType);
        return signSceneArrayWithFMResultSet(std::move(query));
    });
}

std::vector<QVTempletDataModel> QVDataManager::allSignSceneData() {
    const std::lock_guard lock(mutex_);
    return signSceneArrayWithFMResultSet(database().prepare(kAll));
}

std::vector<SceneConfigData> QVDataManager::allScenes() {
    const std::lock_guard lock(mutex_);
    std::vector<SceneConfigData> scenes;
    for (Statement rows = database().prepare(kAll); rows.step();)
        scenes.push_back(sceneOfRow(rows, scenePath_));
    return scenes;
}

std::optional<SceneConfigData> QVDataManager::querySceneWithSid(int64_t sId) {
    using Found = std::optional<SceneConfigData>;
    const auto look = [&]() -> Found {
        Statement query = database().prepare(kBySid);
        query.bind(1, sId);
        return query.step() ? Found(sceneOfRow(query, scenePath_)) : Found();
    };
    // What passes is no reason to play without the scene.
    return logged<Found>("looking a scene up", {}, look, Passing::Thrown);
}

void QVDataManager::transaction(const std::function<void(Database&)>& work) {
    const std::lock_guard lock(mutex_);
    Database& connection = writableDatabase();
    const Raised throwing(throwing_);
    connection.transaction([&] { work(connection); });
}

void QVDataManager::withDatabase(const std::function<void(Database&)>& work) {
    const std::lock_guard lock(mutex_);
    work(database());
}

void QVDataManager::removeSignSceneDataWithSid(int64_t sId) {
    const std::lock_guard lock(mutex_);
    writableDatabase().prepare(kDelete).bind(1, sId).step();
}

}  // namespace multiscene
