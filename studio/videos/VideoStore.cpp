#include "studio/videos/VideoStore.h"

#include <set>

#include "platform/base/File.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

using platform::Statement;

namespace {

constexpr const char* kTable = R"(
CREATE TABLE IF NOT EXISTS video(
  id TEXT PRIMARY KEY, job TEXT NOT NULL UNIQUE REFERENCES job ON DELETE CASCADE,
  session TEXT NOT NULL REFERENCES session ON DELETE CASCADE, title TEXT NOT NULL,
  template INTEGER NOT NULL, template_title TEXT NOT NULL, bytes INTEGER NOT NULL, width INTEGER NOT NULL,
  height INTEGER NOT NULL, frames INTEGER NOT NULL, milliseconds INTEGER NOT NULL, sound INTEGER NOT NULL,
  kept INTEGER NOT NULL, created INTEGER NOT NULL, expires INTEGER NOT NULL) STRICT;
CREATE INDEX IF NOT EXISTS video_mine ON video(session, created);
)";

constexpr double kMilli = 1000;

Video videoOf(const Statement& row) {
    Video video;
    video.id = row.text("id");
    video.job = row.text("job");
    video.session = row.text("session");
    video.title = row.text("title");
    video.templateId = row.integer("template");
    video.templateTitle = row.text("template_title");
    video.bytes = row.integer("bytes");
    video.width = row.integer("width");
    video.height = row.integer("height");
    video.frames = row.integer("frames");
    video.seconds = static_cast<double>(row.integer("milliseconds")) / kMilli;
    video.hasSound = row.integer("sound") != 0;
    video.isKept = row.integer("kept") != 0;
    video.created = row.integer("created");
    video.expires = row.integer("expires");
    return video;
}

}  // namespace

VideoStore::VideoStore(platform::Database& database, std::filesystem::path folder)
    : database_(database), folder_(std::move(folder)) {
    database_.transaction([this] { database_.execute(kTable); });
}

void VideoStore::add(const Video& video) {
    database_.prepare("INSERT INTO video VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
        .bind(1, video.id)
        .bind(2, video.job)
        .bind(3, video.session)
        .bind(4, video.title)
        .bind(5, video.templateId)
        .bind(6, video.templateTitle)
        .bind(7, video.bytes)
        .bind(8, video.width)
        .bind(9, video.height)
        .bind(10, video.frames)
        .bind(11, static_cast<int64_t>(video.seconds * kMilli))
        .bind(12, int64_t{video.hasSound})
        .bind(13, int64_t{video.isKept})
        .bind(14, video.created)
        .bind(15, video.expires)
        .step();
}

std::optional<Video> VideoStore::find(const std::string& id) {
    Statement row = database_.prepare("SELECT * FROM video WHERE id = ?");
    return row.bind(1, id).step() ? std::optional(videoOf(row)) : std::nullopt;
}

std::optional<Video> VideoStore::find(const std::string& id, const std::string& session) {
    auto video = find(id);
    return video && video->session == session ? video : std::nullopt;
}

std::vector<Video> VideoStore::list(const std::string& session, int64_t most, const std::string& cursor) {
    Statement rows = database_.prepare(
        "SELECT * FROM video WHERE session = ?1 AND job NOT IN (SELECT id FROM job WHERE kind = 'draft') AND "
        "(?2 = '' OR (created, id) < (SELECT created, id FROM "
        "video "
        "WHERE id = ?2)) ORDER BY created DESC, id DESC LIMIT ?3");
    rows.bind(1, session).bind(2, cursor).bind(3, most);
    std::vector<Video> videos;
    while (rows.step()) videos.push_back(videoOf(rows));
    return videos;
}

int64_t VideoStore::bytesOfAll() {
    Statement row = database_.prepare("SELECT coalesce(sum(bytes), 0) AS bytes FROM video");
    return row.step() ? row.integer("bytes") : 0;
}

void VideoStore::change(const std::string& id, const std::string& title, bool isKept) {
    database_.prepare("UPDATE video SET title = ?, kept = ? WHERE id = ?")
        .bind(1, title)
        .bind(2, int64_t{isKept})
        .bind(3, id)
        .step();
}

void VideoStore::remove(const std::string& id) {
    database_.prepare("DELETE FROM video WHERE id = ?").bind(1, id).step();
    removeFiles(id);
}

void VideoStore::removeExpired(int64_t now) {
    std::vector<std::string> videos;
    {
        Statement rows = database_.prepare(
            "DELETE FROM video WHERE kept = 0 AND expires > 0 AND expires <= ? RETURNING id");
        for (rows.bind(1, now); rows.step();) videos.push_back(rows.text("id"));
    }
    for (const std::string& id : videos) removeFiles(id);
}

void VideoStore::sweep(std::chrono::seconds age) {
    std::set<std::string> files;
    std::vector<std::string> lost;
    {
        Statement rows = database_.prepare("SELECT id FROM video");
        while (rows.step()) {
            const std::string id = rows.text("id");
            if (!platform::isFile(fileOf(id))) lost.push_back(id);
            for (const auto& path : {fileOf(id), posterOf(id)}) files.insert(path.filename().string());
        }
    }
    for (const std::string& id : lost) remove(id);
    removeUnknown(
        folder_, [&](const std::string& name) { return files.contains(name); }, age);
}

void VideoStore::removeFiles(const std::string& id) const {
    removeQuietly(fileOf(id));
    removeQuietly(posterOf(id));
}

}  // namespace multiscene::studio
