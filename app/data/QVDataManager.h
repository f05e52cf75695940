// The catalogue: every installed scene is one row of the table "signSceneTable".
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "app/Model/QVTempletDataModel.h"
#include "group/SceneCatalogue.h"
#include "other/QVUtil.h"
#include "platform/store/Database.h"

namespace multiscene {

/// The only class that touches the catalogue's table. One connection, serialised: safe from any thread.
///
/// The plain queries log a failure and answer with nothing (−1, an empty list), because a screen can show no
/// more than that. Whoever must tell the user calls checkUsable() first, or works inside transaction(), where
/// every failure is thrown.
class QVDataManager : public SceneCatalogue {
  public:
    /// The catalogue of the data home, opened on first use. Several may be open at once.
    QVDataManager() : QVDataManager(databasePath(), QVUtil::scenePath()) {}

    /// A catalogue in another file, or in memory with platform::Database::kInMemory: that of a template which
    /// is played without being installed, whose folder lies in `scenePath`.
    explicit QVDataManager(std::string databasePath, std::string scenePath = QVUtil::scenePath())
        : path_(std::move(databasePath)), scenePath_(std::move(scenePath)) {}

    /// Where the data home keeps its catalogue.
    static std::string databasePath();

    /// In a process that may not touch the catalogue of the data home: from now on it is read from copies
    /// that `copy` gives (see platform::Database::image(); empty: there is no catalogue yet) and cannot be
    /// changed. Set before there are threads.
    static void readCopies(std::function<std::string()> copy);
    /// What others have changed meanwhile is seen from now on.
    void readAnew();

    /// Opens the database, makes what is missing, and looks for damage. Throws platform::Error.
    void checkUsable();
    /// The whole catalogue for readCopies(). Throws platform::Error.
    std::string image();

    bool isSignSceneHasWithSid(int64_t sId);
    /// Adds a record and returns its sId; −1 when that sId is taken or the record could not be stored. Path
    /// macros are stored as they are, the name in the user's language.
    int64_t insertSignSceneDataWithSignSceneDataModel(const QVTempletDataModel& model);
    /// Adds every element of "installScenes"; returns how many were new.
    int installMultiSceneTemplate(const platform::Value& info);
    /// Rows with this sId, paths complete.
    std::vector<QVTempletDataModel> queryCSignSceneDataWithSid(int64_t sId);
    /// Rows of one group of the catalogue in order of insertion.
    std::vector<QVTempletDataModel> queryCSignSceneDataWithSourceType(int64_t sourceType);
    /// Every row in order of insertion. Throws platform::Error.
    std::vector<QVTempletDataModel> allSignSceneData();
    /// The same without the input descriptions, which templates have written.
    std::vector<SceneConfigData> allScenes();

    std::optional<SceneConfigData> querySceneWithSid(int64_t sId) override;

    /// Runs `work` with the connection for itself, in one transaction. Failures of the queries above are
    /// thrown inside it, and roll everything back. Throws platform::Error.
    void transaction(const std::function<void(platform::Database&)>& work);

    /// Runs `work` with the connection for itself, outside a transaction. Throws platform::Error.
    void withDatabase(const std::function<void(platform::Database&)>& work);

    /// Deletes the rows with this sId; inside a transaction. Throws platform::Error.
    void removeSignSceneDataWithSid(int64_t sId);

  private:
    platform::Database& database();
    std::unique_ptr<platform::Database> opened() const;
    std::unique_ptr<platform::Database> openedForReading() const;
    std::unique_ptr<platform::Database> openedCopy() const;
    platform::Database& writableDatabase();
    /// What becomes of failures that pass.
    enum class Passing { Logged, Thrown };
    template <typename Result>
    Result logged(const char* action, Result onFailure, const std::function<Result()>& work,
                  Passing passing = Passing::Logged);
    int64_t insert(const QVTempletDataModel& model);
    std::vector<QVTempletDataModel> signSceneArrayWithFMResultSet(platform::Statement rows);

    std::string path_, scenePath_;
    std::recursive_mutex mutex_;
    std::unique_ptr<platform::Database> database_;
    std::optional<platform::Error> unwritable_;  ///< why the data folder cannot be written
    bool throwing_ = false;                      ///< a transaction is running
};

}  // namespace multiscene
