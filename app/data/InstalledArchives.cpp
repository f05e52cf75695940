#include "app/data/InstalledArchives.h"

namespace multiscene {

using platform::Database;

namespace {

constexpr const char* kTable = "installedArchives";
constexpr const char* kCreate =
    "CREATE TABLE IF NOT EXISTS installedArchives (name TEXT PRIMARY KEY, digest TEXT NOT NULL)";

}  // namespace

void InstalledArchives::remember(Database& database, const std::string& name, const std::string& digest) {
    database.execute(kCreate);
    database.prepare("INSERT OR REPLACE INTO installedArchives (name, digest) VALUES (?, ?)")
        .bind(1, name)
        .bind(2, digest)
        .step();
}

void InstalledArchives::forget(Database& database, const std::string& name) {
    database.execute(kCreate);
    database.prepare("DELETE FROM installedArchives WHERE name = ?").bind(1, name).step();
}

std::map<std::string, std::string> InstalledArchives::digests() {
    std::map<std::string, std::string> digests;
    catalogue_.withDatabase([&](Database& database) {
        if (!database.tableExists(kTable)) return;
        platform::Statement rows = database.prepare("SELECT * FROM installedArchives");
        while (rows.step()) digests[rows.text("name")] = rows.text("digest");
    });
    return digests;
}

}  // namespace multiscene
