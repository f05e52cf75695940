#include "studio/jobs/JobStore.h"

#include "platform/base/Json.h"

namespace multiscene::studio {

using platform::Statement;
using platform::Value;

namespace {

constexpr const char* kTables = R"(
CREATE TABLE IF NOT EXISTS job(
  id TEXT PRIMARY KEY, session TEXT NOT NULL REFERENCES session ON DELETE CASCADE,
  kind TEXT NOT NULL CHECK(kind IN ('video', 'draft', 'install', 'refresh')),
  state TEXT NOT NULL CHECK(state IN
    ('queued', 'running', 'cancelling', 'done', 'failed', 'cancelled', 'expired')),
  template INTEGER NOT NULL, template_title TEXT NOT NULL, title TEXT NOT NULL, request TEXT NOT NULL,
  metadata TEXT NOT NULL, callback TEXT NOT NULL, cost INTEGER NOT NULL, total INTEGER NOT NULL,
  attempt INTEGER NOT NULL DEFAULT 0, deaths INTEGER NOT NULL DEFAULT 0, not_before INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL,
  started INTEGER NOT NULL DEFAULT 0, ended INTEGER NOT NULL DEFAULT 0,
  problem TEXT NOT NULL DEFAULT '') STRICT;
CREATE INDEX IF NOT EXISTS job_queue ON job(state, created);
CREATE INDEX IF NOT EXISTS job_mine ON job(session, created);
CREATE TABLE IF NOT EXISTS job_upload(
  job TEXT NOT NULL REFERENCES job ON DELETE CASCADE,
  upload TEXT NOT NULL REFERENCES upload ON DELETE CASCADE, PRIMARY KEY(job, upload)) STRICT, WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS upload_jobs ON job_upload(upload);
CREATE TABLE IF NOT EXISTS turn(
  session TEXT PRIMARY KEY REFERENCES session ON DELETE CASCADE, count INTEGER NOT NULL) STRICT, WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS cost(template INTEGER PRIMARY KEY, picoseconds INTEGER NOT NULL) STRICT;
CREATE TABLE IF NOT EXISTS idempotency(
  session TEXT NOT NULL REFERENCES session ON DELETE CASCADE, key TEXT NOT NULL, digest TEXT NOT NULL,
  answer TEXT NOT NULL, created INTEGER NOT NULL, PRIMARY KEY(session, key)) STRICT, WITHOUT ROWID;
)";

constexpr const char* kColumns =
    "SELECT job.*, coalesce(video.id, '') AS video FROM job LEFT JOIN video ON video.job = job.id ";

/// A full video that has waited so long goes before younger drafts.
constexpr int64_t kPatienceMs = 2 * 60 * 1000;

Value parsed(const std::string& text) {
    return text.empty() ? Value() : platform::parseJson(text, "studio.db");
}

Job jobOf(const Statement& row) {
    Job job;
    job.id = row.text("id");
    job.session = row.text("session");
    job.kind = jobKindNamed(row.text("kind"));
    job.state = jobStateNamed(row.text("state")).value_or(JobState::Failed);
    job.templateId = row.integer("template");
    job.templateTitle = row.text("template_title");
    job.title = row.text("title");
    job.request = parsed(row.text("request"));
    job.metadata = parsed(row.text("metadata"));
    job.callback = row.text("callback");
    job.cost = row.integer("cost");
    job.total = row.integer("total");
    job.attempt = static_cast<int>(row.integer("attempt"));
    job.deaths = static_cast<int>(row.integer("deaths"));
    job.notBefore = row.integer("not_before");
    job.created = row.integer("created");
    job.started = row.integer("started");
    job.ended = row.integer("ended");
    job.problem = parsed(row.text("problem"));
    job.video = row.text("video");
    return job;
}

std::vector<Job> jobsOf(Statement& rows) {
    std::vector<Job> jobs;
    while (rows.step()) jobs.push_back(jobOf(rows));
    return jobs;
}

std::string kindsThat(bool areDrawn) {
    return areDrawn ? "kind IN ('video', 'draft')" : "kind IN ('install', 'refresh')";
}

}  // namespace

JobStore::JobStore(platform::Database& database) : database_(database) {
    database_.transaction([this] { database_.execute(kTables); });
}

void JobStore::add(const Job& job, const std::vector<std::string>& uploads) {
    database_.transaction([&] {
        database_
            .prepare(
                "INSERT INTO job(id, session, kind, state, template, template_title, title, request, "
                "metadata, callback, cost, total, created) VALUES(?, ?, ?, 'queued', ?, ?, ?, ?, ?, ?, ?, ?, "
                "?)")
            .bind(1, job.id)
            .bind(2, job.session)
            .bind(3, wordOf(job.kind))
            .bind(4, job.templateId)
            .bind(5, job.templateTitle)
            .bind(6, job.title)
            .bind(7, platform::jsonText(job.request))
            .bind(8, platform::jsonText(job.metadata))
            .bind(9, job.callback)
            .bind(10, job.cost)
            .bind(11, job.total)
            .bind(12, job.created)
            .step();
        for (const std::string& upload : uploads)
            database_.prepare("INSERT OR IGNORE INTO job_upload VALUES(?, ?)")
                .bind(1, job.id)
                .bind(2, upload)
                .step();
    });
}

std::optional<Job> JobStore::find(const std::string& id) {
    Statement row = database_.prepare(std::string(kColumns) + "WHERE job.id = ?");
    return row.bind(1, id).step() ? std::optional(jobOf(row)) : std::nullopt;
}

std::vector<Job> JobStore::list(const std::string& session, std::optional<JobState> state, int64_t most,
                                const std::string& cursor) {
    Statement rows = database_.prepare(
        std::string(kColumns) +
        "WHERE job.session = ?1 AND (?2 = '' OR job.state = ?2) AND (?3 = '' OR (job.created, job.id) < "
        "(SELECT created, id FROM job WHERE id = ?3)) ORDER BY job.created DESC, job.id DESC LIMIT ?4");
    rows.bind(1, session).bind(2, state ? wordOf(*state) : "").bind(3, cursor).bind(4, most);
    return jobsOf(rows);
}

std::vector<Job> JobStore::unended() {
    Statement rows =
        database_.prepare(std::string(kColumns) + "WHERE job.state IN ('queued', 'running', 'cancelling')");
    return jobsOf(rows);
}

std::optional<JobStore::Remembered> JobStore::remembered(const std::string& session, const std::string& key) {
    Statement row = database_.prepare("SELECT digest, answer FROM idempotency WHERE session = ? AND key = ?");
    if (!row.bind(1, session).bind(2, key).step()) return std::nullopt;
    return Remembered{row.text("digest"), parsed(row.text("answer"))};
}

void JobStore::remember(const std::string& session, const std::string& key, const Remembered& answer,
                        int64_t now) {
    database_.prepare("INSERT INTO idempotency VALUES(?, ?, ?, ?, ?)")
        .bind(1, session)
        .bind(2, key)
        .bind(3, answer.digest)
        .bind(4, platform::jsonText(answer.answer))
        .bind(5, now)
        .step();
}

std::map<std::string, int64_t> JobStore::turns() {
    std::map<std::string, int64_t> all;
    Statement rows = database_.prepare("SELECT session, count FROM turn");
    while (rows.step()) all[rows.text("session")] = rows.integer("count");
    return all;
}

std::vector<WaitingJob> JobStore::waiting(bool areDrawn, int64_t now) {
    std::vector<WaitingJob> jobs;
    Statement rows = database_.prepare(
        "SELECT id, session, kind, created FROM job WHERE state = 'queued' AND " + kindsThat(areDrawn));
    while (rows.step()) {
        WaitingJob job{rows.text("id"), rows.text("session"), rows.text("kind") != "video",
                       rows.integer("created")};
        job.isUrgent |= job.created < now - kPatienceMs;
        jobs.push_back(std::move(job));
    }
    return inOrder(std::move(jobs), turns());
}

JobStore::Counts JobStore::countWaiting(const std::string& session) {
    Statement row = database_.prepare(
        "SELECT count(*) AS every, coalesce(sum(session = ?), 0) AS own FROM job WHERE state = 'queued'");
    return row.bind(1, session).step() ? Counts{row.integer("every"), row.integer("own")} : Counts{};
}

std::map<std::string, int64_t> JobStore::countByState() {
    std::map<std::string, int64_t> counts;
    Statement rows = database_.prepare("SELECT state, count(*) AS jobs FROM job GROUP BY state");
    while (rows.step()) counts[rows.text("state")] = rows.integer("jobs");
    return counts;
}

std::optional<Job> JobStore::claim(bool areDrawn, int64_t now) {
    std::optional<Job> claimed;
    database_.transaction([&] {
        for (const WaitingJob& job : waiting(areDrawn, now)) {
            Statement taking = database_.prepare(
                "UPDATE job SET state = 'running', attempt = attempt + 1, started = ?1 "
                "WHERE id = ?2 AND state = 'queued' AND not_before <= ?1 RETURNING id");
            if (!taking.bind(1, now).bind(2, job.id).step()) continue;
            database_
                .prepare(
                    "INSERT INTO turn VALUES(?1, (SELECT coalesce(max(count), 0) + 1 FROM turn)) "
                    "ON CONFLICT(session) DO UPDATE SET count = excluded.count")
                .bind(1, job.session)
                .step();
            claimed = find(job.id);
            return;
        }
    });
    return claimed;
}

std::optional<int64_t> JobStore::nextDue(int64_t now) {
    Statement row =
        database_.prepare("SELECT min(not_before) AS due FROM job WHERE state = 'queued' AND not_before > ?");
    const int64_t due = row.bind(1, now).step() ? row.integer("due") : 0;
    return due > 0 ? std::optional(due) : std::nullopt;
}

bool JobStore::cancelWaiting(const std::string& id, int64_t now) {
    return database_
        .prepare(
            "UPDATE job SET state = 'cancelled', ended = ? WHERE id = ? AND state = 'queued' RETURNING id")
        .bind(1, now)
        .bind(2, id)
        .run();
}

bool JobStore::askToCancel(const std::string& id) {
    return database_
        .prepare("UPDATE job SET state = 'cancelling' WHERE id = ? AND state = 'running' RETURNING id")
        .bind(1, id)
        .run();
}

bool JobStore::putBack(const std::string& id, int64_t notBefore) {
    return database_
        .prepare(
            "UPDATE job SET state = 'queued', not_before = ? WHERE id = ? AND state = 'running' RETURNING id")
        .bind(1, notBefore)
        .bind(2, id)
        .run();
}

bool JobStore::putBackUncounted(const std::string& id, bool wasKilled, int64_t notBefore) {
    return database_
        .prepare(
            "UPDATE job SET state = 'queued', attempt = attempt - 1, deaths = deaths + ?, not_before = ? "
            "WHERE id = ? AND state = 'running' RETURNING id")
        .bind(1, int64_t{wasKilled})
        .bind(2, notBefore)
        .bind(3, id)
        .run();
}

bool JobStore::end(const std::string& id, JobState state, const Value& problem, int64_t now) {
    return database_
        .prepare(
            "UPDATE job SET state = ?1, problem = ?2, ended = ?3 WHERE id = ?4 AND "
            "(state = 'running' OR (state = 'cancelling' AND ?1 <> 'done')) RETURNING id")
        .bind(1, wordOf(state))
        .bind(2, problem ? platform::jsonText(problem) : "")
        .bind(3, now)
        .bind(4, id)
        .run();
}

std::vector<std::string> JobStore::expire() {
    std::vector<std::string> ids;
    Statement rows =
        database_.prepare("UPDATE job SET state = 'expired' WHERE state = 'done' AND " + kindsThat(true) +
                          " AND id NOT IN (SELECT job FROM video) RETURNING id");
    while (rows.step()) ids.push_back(rows.text("id"));
    return ids;
}

void JobStore::forgetBefore(int64_t time) {
    database_.prepare("DELETE FROM job WHERE ended > 0 AND ended < ? AND id NOT IN (SELECT job FROM video)")
        .bind(1, time)
        .step();
}

void JobStore::forgetAnswersBefore(int64_t time) {
    database_.prepare("DELETE FROM idempotency WHERE created < ?").bind(1, time).step();
}

std::optional<int64_t> JobStore::measuredCost(int64_t templateId) {
    Statement row = database_.prepare("SELECT picoseconds FROM cost WHERE template = ?");
    return row.bind(1, templateId).step() ? std::optional(row.integer("picoseconds")) : std::nullopt;
}

void JobStore::measure(int64_t templateId, int64_t picoseconds) {
    database_
        .prepare(
            "INSERT INTO cost VALUES(?1, ?2) ON CONFLICT(template) DO UPDATE SET "
            "picoseconds = (picoseconds + excluded.picoseconds) / 2")
        .bind(1, templateId)
        .bind(2, picoseconds)
        .step();
}

}  // namespace multiscene::studio
