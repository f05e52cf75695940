#include "studio/uploads/UploadsApi.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/base/CurrentError.h"
#include "platform/base/File.h"
#include "platform/base/PrivateFolder.h"
#include "studio/api/LinkAddress.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"
#include "studio/store/Names.h"
#include "studio/store/Sweep.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;
using platform::http::Answer;

namespace {

constexpr int64_t kStaysMs = 24 * 3600 * 1000;  ///< of what nobody uses
constexpr size_t kMostName = 200;
constexpr int64_t kMinuteMs = 60'000, kUsualMinutes = 15, kMostMinutes = 24 * 60;
constexpr uint64_t kLeastFree = uint64_t{512} << 20;  ///< bytes that stay free on the disk

Value uploadSchema() {
    return schema::object({{"id", schema::text()},
                           {"kind", schema::word({"photo", "video", "sound"})},
                           {"name", schema::text()},
                           {"bytes", schema::integer()},
                           {"width", schema::orNull(schema::integer())},
                           {"height", schema::orNull(schema::integer())},
                           {"seconds", schema::orNull(schema::number())},
                           {"proxy", schema::orNull(schema::address())},
                           {"expires", schema::time()}});
}

uint64_t mostBytesOf(const std::string& kind, const StudioLimits& limits) {
    if (kind == "photo") return limits.photoBytes;
    return kind == "sound" ? limits.soundBytes : limits.videoBytes;
}

/// Any thread.
void requireDisk(const fs::path& folder) {
    std::error_code failure;
    const fs::space_info space = fs::space(folder, failure);
    if (failure || space.available >= kLeastFree) return;
    Problem full(503, "disk-full", "the disk is almost full");
    full.retryAfter = 60;
    throw full;
}

/// Not within a character.
std::string shortened(std::string name) {
    if (name.size() <= kMostName) return name;
    size_t end = kMostName;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xc0) == 0x80) --end;
    name.resize(end);
    return name;
}

}  // namespace

std::vector<Route> UploadsApi::routes() {
    const auto bound = [this](void (UploadsApi::*method)(ApiRequest&, Responder&)) {
        return [this, method](ApiRequest& request, Responder& responder) {
            (this->*method)(request, responder);
        };
    };
    const StudioLimits& limits = shop_->parts.settings.limits;
    const uint64_t most = std::max({limits.photoBytes, limits.videoBytes, limits.soundBytes});
    const auto target = [folder = shop_->parts.folders.uploads](const Session&) {
        requireDisk(folder);
        return folder / newName("new");
    };
    Body linkedBody = Body::file(target, most);
    linkedBody.mostOf = [this](const auto& path) { return grantOf(path.at("token")).mostBytes; };
    return {
        {.method = "POST",
         .pattern = "/api/v1/uploads",
         .access = Access::Make,
         .body = Body::file(target, most),
         .summary = "Takes a photo, a video or a sound: the body is the file",
         .query = {{"name", "What its owner calls it"}},
         .results = {{201, "application/json", uploadSchema()}},
         .handle = bound(&UploadsApi::create)},
        {.method = "POST",
         .pattern = "/api/v1/uploads/links",
         .access = Access::Make,
         .body = Body::json(schema::object({{"bytes?", schema::integer(1, static_cast<int64_t>(most))},
                                            {"minutes?", schema::integer(1, kMostMinutes)}})),
         .summary =
             "An address that takes one file by PUT from who has no session; \"id\" is what it becomes",
         .results = {{201, "application/json",
                      schema::object({{"id", schema::text()},
                                      {"url", schema::address()},
                                      {"bytes", schema::integer()},
                                      {"expires", schema::time()}})}},
         .handle = bound(&UploadsApi::link)},
        {.method = "PUT",
         .pattern = "/u/{token}",
         .access = Access::Public,
         .body = std::move(linkedBody),
         .summary = "Takes the one file of a link, whether it can be used or not",
         .results = {{201, "application/json", uploadSchema()}},
         .handle = bound(&UploadsApi::linked)},
        {.method = "GET",
         .pattern = "/api/v1/uploads/{id}",
         .summary = "What was uploaded",
         .results = {{200, "application/json", uploadSchema()}},
         .handle = [this](ApiRequest& request,
                          Responder& responder) { responder.answer(json(200, valueOf(own(request)))); }},
        {.method = "GET",
         .pattern = "/api/v1/uploads/{id}/proxy.jpg",
         .summary = "A smaller picture of it, upright",
         .results = {{200, "image/jpeg", {}}},
         .handle = bound(&UploadsApi::proxy)},
        {.method = "DELETE",
         .pattern = "/api/v1/uploads/{id}",
         .access = Access::Make,
         .summary = "Removes it",
         .results = {{204, "", {}}},
         .handle = bound(&UploadsApi::remove)},
    };
}

Upload UploadsApi::own(const ApiRequest& request) {
    const auto upload = shop_->uploads.find(request.id(), request.session.id);
    if (!upload) throw notFound("upload");
    return *upload;
}

void UploadsApi::requireRoom(const Upload& upload) {
    const StudioLimits& limits = shop_->parts.settings.limits;
    const std::string& session = upload.session;
    const auto used = static_cast<uint64_t>(shop_->uploads.bytesOf(session) + intake_.bytesOf(session));
    const size_t waiting = intake_.countOf(session);
    const bool isFull = used + static_cast<uint64_t>(upload.bytes) > limits.storedBytes ||
                        static_cast<uint64_t>(shop_->uploads.countOf(session)) + waiting >= limits.uploads;
    if (isFull) throw Problem(413, "quota", "there is no room for more uploads; remove some first");
    if (waiting < limits.uploadsWaiting) return;
    Problem busy(429, "too-many-uploads", "too many uploads wait to be looked at");
    busy.retryAfter = 5;
    throw busy;
}

void UploadsApi::create(ApiRequest& request, Responder& responder) {
    Upload upload;
    upload.id = newName("upl");
    upload.session = request.session.id;
    upload.name = shortened(request.head.parameter("name").value_or(""));
    judge(upload, request);
    take(upload, request, responder);
}

void UploadsApi::link(ApiRequest& request, Responder& responder) {
    const StudioLimits& limits = shop_->parts.settings.limits;
    const int64_t minutes = request.body.has("minutes") ? request.body.integer("minutes") : kUsualMinutes;
    const UploadLinks::Grant grant{
        request.session.id, newName("upl"), nowMs() + minutes * kMinuteMs,
        request.body.has("bytes") ? static_cast<uint64_t>(request.body.integer("bytes")) : limits.photoBytes};
    const std::string url = linkAddress(shop_->parts.settings, request.head, "/u/" + links_.token(grant));
    responder.answer(json(201, Value::Dictionary{{"id", grant.upload},
                                                 {"url", url},
                                                 {"bytes", static_cast<int64_t>(grant.mostBytes)},
                                                 {"expires", timeText(grant.expires)}}));
}

/// Any thread.
UploadLinks::Grant UploadsApi::grantOf(const std::string& token) const {
    const auto grant = links_.grantOf(token, nowMs());
    // Nor is one of who was shown out.
    if (!grant || !shop_->parts.sessions.isKnown(grant->session))
        throw Problem(404, "link-gone", "this link is not good any more");
    return *grant;
}

void UploadsApi::linked(ApiRequest& request, Responder& responder) {
    const UploadLinks::Grant grant = grantOf(request.path.at("token"));
    Upload upload;
    upload.id = grant.upload;
    upload.session = grant.session;
    if (!shop_->uploads.useLink(grant.upload, grant.expires))
        throw Problem(409, "link-used", "this link has taken its file already");
    try {
        judge(upload, request);
    } catch (...) {
        shop_->uploads.freeLink(grant.upload);
        throw;
    }
    take(upload, request, responder);
}

void UploadsApi::judge(Upload& upload, const ApiRequest& request) {
    if (!request.file || request.bodyBytes == 0) throw Problem(400, "usage", "the body is empty");
    upload.bytes = static_cast<int64_t>(request.bodyBytes);
    upload.created = nowMs();
    upload.expires = upload.created + kStaysMs;
    shop_->counters.uploadedBytes += request.bodyBytes;
    requireRoom(upload);
}

void UploadsApi::take(const Upload& upload, ApiRequest& request, Responder& responder) {
    intake_.take(upload, shop_->uploads.folderOf(upload.id), std::move(request.file),
                 [this, id = upload.id, waiting = std::make_shared<Responder>(std::move(responder))](
                     const std::optional<Upload>& taken, int exitCode) {
                     waiting->answer(answerTo(id, taken, exitCode));
                 });
}

Answer UploadsApi::answerTo(const std::string& id, const std::optional<Upload>& upload, int exitCode) {
    try {
        constexpr int passing = static_cast<int>(platform::ErrorKind::Transient);
        if (!upload && exitCode == passing) {
            shop_->uploads.freeLink(id);
            throw platform::Error(platform::ErrorKind::Transient, "the file could not be looked at");
        }
        if (!upload) throw Problem(415, "not-media", "this is no photo, video or sound that can be used");
        if (static_cast<uint64_t>(upload->bytes) > mostBytesOf(upload->kind, shop_->parts.settings.limits)) {
            removeQuietly(shop_->uploads.folderOf(upload->id));
            throw Problem(413, "too-large", "this " + upload->kind + " is too large");
        }
        shop_->uploads.add(*upload);
        return json(201, valueOf(*upload)).with("Location", "/api/v1/uploads/" + upload->id);
    } catch (...) {
        return answerOf(currentProblem());
    }
}

void UploadsApi::proxy(ApiRequest& request, Responder& responder) {
    const Upload upload = own(request);
    platform::FileHandle file =
        platform::openFile(shop_->uploads.folderOf(upload.id) / Intake::kProxy, O_RDONLY | O_NOFOLLOW);
    if (!file) throw notFound("picture of this upload");
    responder.answer(
        Answer::ofFile(std::move(file), "image/jpeg").with("Cache-Control", "private, max-age=86400"));
}

void UploadsApi::remove(ApiRequest& request, Responder& responder) {
    if (!shop_->uploads.remove(own(request).id)) throw Problem(409, "in-use", "a job still uses it");
    responder.answer(Answer(204));
}

}  // namespace multiscene::studio
