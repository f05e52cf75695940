#include "studio/uploads/UploadStore.h"

#include <set>

#include "platform/base/File.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

using platform::Statement;

namespace {

constexpr const char* kTable = R"(
CREATE TABLE IF NOT EXISTS upload(
  id TEXT PRIMARY KEY, session TEXT NOT NULL REFERENCES session ON DELETE CASCADE, kind TEXT NOT NULL,
  name TEXT NOT NULL, file TEXT NOT NULL, bytes INTEGER NOT NULL, width INTEGER NOT NULL,
  height INTEGER NOT NULL, milliseconds INTEGER NOT NULL, proxy INTEGER NOT NULL,
  created INTEGER NOT NULL, expires INTEGER NOT NULL) STRICT;
CREATE INDEX IF NOT EXISTS upload_mine ON upload(session);
CREATE TABLE IF NOT EXISTS used_link(upload TEXT PRIMARY KEY, expires INTEGER NOT NULL) STRICT, WITHOUT ROWID;
)";

constexpr const char* kUnused =
    "NOT EXISTS (SELECT 1 FROM job_upload JOIN job ON job.id = job_upload.job WHERE job_upload.upload = "
    "upload.id AND job.state IN ('queued', 'running', 'cancelling')) ";

Upload uploadOf(const Statement& row) {
    Upload upload;
    upload.id = row.text("id");
    upload.session = row.text("session");
    upload.kind = row.text("kind");
    upload.name = row.text("name");
    upload.file = row.text("file");
    upload.bytes = row.integer("bytes");
    upload.width = row.integer("width");
    upload.height = row.integer("height");
    upload.milliseconds = row.integer("milliseconds");
    upload.hasProxy = row.integer("proxy") != 0;
    upload.created = row.integer("created");
    upload.expires = row.integer("expires");
    return upload;
}

}  // namespace

UploadStore::UploadStore(platform::Database& database, std::filesystem::path folder)
    : database_(database), folder_(std::move(folder)) {
    database_.transaction([this] { database_.execute(kTable); });
}

void UploadStore::add(const Upload& upload) {
    database_.prepare("INSERT INTO upload VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .bind(1, upload.id)
        .bind(2, upload.session)
        .bind(3, upload.kind)
        .bind(4, upload.name)
        .bind(5, upload.file)
        .bind(6, upload.bytes)
        .bind(7, upload.width)
        .bind(8, upload.height)
        .bind(9, upload.milliseconds)
        .bind(10, int64_t{upload.hasProxy})
        .bind(11, upload.created)
        .bind(12, upload.expires)
        .step();
}

std::optional<Upload> UploadStore::find(const std::string& id, const std::string& session) {
    Statement row = database_.prepare("SELECT * FROM upload WHERE id = ? AND session = ?");
    return row.bind(1, id).bind(2, session).step() ? std::optional(uploadOf(row)) : std::nullopt;
}

int64_t UploadStore::bytesOf(const std::string& session) {
    Statement row =
        database_.prepare("SELECT coalesce(sum(bytes), 0) AS bytes FROM upload WHERE session = ?");
    return row.bind(1, session).step() ? row.integer("bytes") : 0;
}

int64_t UploadStore::countOf(const std::string& session) {
    Statement row = database_.prepare("SELECT count(*) AS count FROM upload WHERE session = ?");
    return row.bind(1, session).step() ? row.integer("count") : 0;
}

bool UploadStore::useLink(const std::string& upload, int64_t expires) {
    return database_.prepare("INSERT OR IGNORE INTO used_link VALUES(?, ?) RETURNING upload")
        .bind(1, upload)
        .bind(2, expires)
        .run();
}

void UploadStore::freeLink(const std::string& upload) {
    database_.prepare("DELETE FROM used_link WHERE upload = ?").bind(1, upload).step();
}

int64_t UploadStore::bytesOfAll() {
    Statement row = database_.prepare("SELECT coalesce(sum(bytes), 0) AS bytes FROM upload");
    return row.step() ? row.integer("bytes") : 0;
}

bool UploadStore::remove(const std::string& id) {
    const bool isRemoved =
        database_.prepare(std::string("DELETE FROM upload WHERE id = ? AND ") + kUnused + "RETURNING id")
            .bind(1, id)
            .run();
    if (isRemoved) removeQuietly(folderOf(id));
    return isRemoved;
}

void UploadStore::release(const std::string& job, int64_t expires) {
    database_
        .prepare(std::string("UPDATE upload SET expires = ? WHERE id IN (SELECT upload FROM job_upload WHERE "
                             "job = ?) AND ") +
                 kUnused)
        .bind(1, expires)
        .bind(2, job)
        .step();
}

void UploadStore::removeOf(const std::string& job) {
    removeThose("id IN (SELECT upload FROM job_upload WHERE job = ?2)", 0, job);
}

void UploadStore::removeExpired(int64_t now) {
    removeThose("expires <= ?1", now, "");
    database_.prepare("DELETE FROM used_link WHERE expires <= ?").bind(1, now).step();
}

void UploadStore::removeThose(const std::string& condition, int64_t number, const std::string& text) {
    std::vector<std::string> removed;
    {
        Statement rows =
            database_.prepare("DELETE FROM upload WHERE (" + condition +
                              ") AND ?1 >= 0 AND ?2 IS NOT NULL AND " + kUnused + "RETURNING id");
        rows.bind(1, number).bind(2, text);
        while (rows.step()) removed.push_back(rows.text("id"));
    }
    for (const std::string& id : removed) removeQuietly(folderOf(id));
}

void UploadStore::sweep(std::chrono::seconds age) {
    std::set<std::string> known;
    std::vector<std::string> lost;
    {
        // Nothing can be written while this is open and another connection has written meanwhile.
        Statement rows = database_.prepare("SELECT id FROM upload");
        while (rows.step()) {
            const std::string id = rows.text("id");
            if (platform::isFolder(folderOf(id)))
                known.insert(id);
            else
                lost.push_back(id);
        }
    }
    for (const std::string& id : lost)
        database_.prepare("DELETE FROM upload WHERE id = ?").bind(1, id).step();
    removeUnknown(
        folder_, [&](const std::string& name) { return known.contains(name); }, age);
}

}  // namespace multiscene::studio
