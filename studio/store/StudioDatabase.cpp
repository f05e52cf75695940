#include "studio/store/StudioDatabase.h"

#include <array>
#include <cerrno>

#include "platform/base/File.h"
#include "platform/base/PrivateFolder.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Database;
using platform::Statement;

namespace {

/// A database may have only some of the tables: those of sessions are made by `studio token`, too.
void addColumn(Database& database, const std::string& table, const std::string& column,
               const std::string& type) {
    if (!database.tableExists(table)) return;
    for (Statement rows = database.prepare("PRAGMA table_info(" + table + ")"); rows.step();)
        if (rows.text("name") == column) return;
    database.execute("ALTER TABLE " + table + " ADD COLUMN " + column + " " + type);
}

/// From the version of their place in the list to the next.
constexpr std::array kSteps = {
    +[](Database& database) { addColumn(database, "job", "deaths", "INTEGER NOT NULL DEFAULT 0"); },
    +[](Database& database) {
        addColumn(database, "webhook", "old_secret", "TEXT NOT NULL DEFAULT ''");
        addColumn(database, "webhook", "old_until", "INTEGER NOT NULL DEFAULT 0");
    },
};

int64_t versionOf(Database& database) {
    Statement row = database.prepare("PRAGMA user_version");
    return row.step() ? row.integer("user_version") : 0;
}

void bringUp(Database& database) {
    requireKnownVersion(database);
    const int64_t from = versionOf(database);
    if (from == kDatabaseVersion) return;
    database.transaction([&] {
        for (auto step = static_cast<size_t>(from); step < kSteps.size(); ++step) kSteps[step](database);
        database.execute("PRAGMA user_version=" + std::to_string(kDatabaseVersion));
    });
}

void move(const fs::path& from, const fs::path& folder) {
    std::error_code failure;
    if (!fs::exists(from, failure)) return;
    fs::rename(from, folder / from.filename(), failure);
    if (failure) throw platform::errnoError(failure.value(), "cannot be set aside", from.string());
}

fs::path setAside(const StudioFolders& folders) {
    const fs::path aside = folders.studio / ("damaged-" + std::to_string(nowMs() / 1000));
    platform::makePrivateFolder(aside);
    for (const char* ending : {"", "-wal", "-shm"}) move(folders.database.string() + ending, aside);
    move(folders.videos, aside);
    folders.make();
    return aside;
}

}  // namespace

const int64_t kDatabaseVersion = kSteps.size();

void requireKnownVersion(Database& database) {
    const int64_t version = versionOf(database);
    if (version <= kDatabaseVersion && version >= 0) return;
    throw platform::Error(platform::ErrorKind::Failed,
                          "a newer version of the program has written this (" + std::to_string(version) +
                              "; this one knows " + std::to_string(kDatabaseVersion) +
                              "): use that one, or another --home",
                          database.file());
}

std::string prepareDatabase(const StudioFolders& folders) {
    try {
        Database database(folders.database.string());
        database.checkIntegrity();
        bringUp(database);
        return {};
    } catch (const platform::DamagedDatabase& damage) {
        const fs::path aside = setAside(folders);
        Database database(folders.database.string());
        bringUp(database);
        return damage.message() + ": it was set aside with its videos in " + aside.string() +
               ", and a new one was begun";
    }
}

}  // namespace multiscene::studio
