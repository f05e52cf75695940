#include "app/data/InstallJournal.h"

namespace multiscene {

using platform::Database;

namespace {

constexpr const char* kTable = "installJournal";
constexpr const char* kCreate =
    "CREATE TABLE IF NOT EXISTS installJournal (name TEXT PRIMARY KEY, newIdentity TEXT NOT NULL, "
    "committed INTEGER NOT NULL DEFAULT 0)";

}  // namespace

void InstallJournal::transaction(const std::function<void(Database&)>& work) {
    catalogue_.transaction([&](Database& database) {
        database.execute(kCreate);
        work(database);
    });
}

void InstallJournal::announce(const std::string& name, const std::string& newIdentity) {
    transaction([&](Database& database) {
        database.prepare("INSERT OR REPLACE INTO installJournal (name, newIdentity) VALUES (?, ?)")
            .bind(1, name)
            .bind(2, newIdentity)
            .step();
    });
}

void InstallJournal::markCommitted(Database& database, const std::string& name) {
    database.prepare("UPDATE installJournal SET committed = 1 WHERE name = ?").bind(1, name).step();
}

void InstallJournal::forget(const std::string& name) {
    transaction([&](Database& database) {
        database.prepare("DELETE FROM installJournal WHERE name = ?").bind(1, name).step();
    });
}

std::vector<PendingChange> InstallJournal::pending() {
    std::vector<PendingChange> changes;
    // A plain reading: every start of the program looks here, and must not wait for a writer.
    catalogue_.withDatabase([&](Database& database) {
        if (!database.tableExists(kTable)) return;
        platform::Statement rows = database.prepare("SELECT * FROM installJournal ORDER BY name");
        while (rows.step())
            changes.push_back({rows.text("name"), rows.text("newIdentity"), rows.integer("committed") != 0});
    });
    return changes;
}

}  // namespace multiscene
