#include "studio/uploads/UploadsApi.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/base/CurrentError.h"
#include "platform/base/File.h"
#include "platform/base/PrivateFolder.h"
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

uint64_t mostBytesOf(const std::string& kind, const StudioSettings& settings) {
    if (kind == "photo") return settings.photoBytes;
    return kind == "sound" ? settings.soundBytes : settings.videoBytes;
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
    const StudioSettings& settings = shop_->parts.settings;
    const uint64_t most = std::max({settings.photoBytes, settings.videoBytes, settings.soundBytes});
    const auto target = [folder = shop_->parts.folders.uploads](const Session&) {
        requireDisk(folder);
        return folder / newName("new");
    };
    return {
        {.method = "POST",
         .pattern = "/api/v1/uploads",
         .access = Access::Make,
         .body = Body::file(target, most),
         .summary = "Takes a photo, a video or a sound: the body is the file",
         .query = {{"name", "What its owner calls it"}},
         .results = {{201, "application/json", uploadSchema()}},
         .handle = bound(&UploadsApi::create)},
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

void UploadsApi::requireRoom(const ApiRequest& request) {
    const int64_t used = shop_->uploads.bytesOf(request.session.id) + intake_.bytesOf(request.session.id);
    const auto more = static_cast<int64_t>(request.bodyBytes);
    if (used + more > shop_->parts.settings.uploadQuota)
        throw Problem(413, "quota", "there is no room for more uploads; remove some first");
}

void UploadsApi::create(ApiRequest& request, Responder& responder) {
    if (!request.file || request.bodyBytes == 0) throw Problem(400, "usage", "the body is empty");
    requireRoom(request);
    Upload upload;
    upload.id = newName("upl");
    upload.session = request.session.id;
    upload.name = shortened(request.head.parameter("name").value_or(""));
    upload.bytes = static_cast<int64_t>(request.bodyBytes);
    upload.created = nowMs();
    upload.expires = upload.created + kStaysMs;
    intake_.take(upload, shop_->uploads.folderOf(upload.id), std::move(request.file),
                 [this, waiting = std::make_shared<Responder>(std::move(responder))](
                     const std::optional<Upload>& taken, int exitCode) {
                     waiting->answer(answerTo(taken, exitCode));
                 });
}

Answer UploadsApi::answerTo(const std::optional<Upload>& upload, int exitCode) {
    try {
        constexpr int passing = static_cast<int>(platform::ErrorKind::Transient);
        if (!upload && exitCode == passing)
            throw platform::Error(platform::ErrorKind::Transient, "the file could not be looked at");
        if (!upload) throw Problem(415, "not-media", "this is no photo, video or sound that can be used");
        if (static_cast<uint64_t>(upload->bytes) > mostBytesOf(upload->kind, shop_->parts.settings)) {
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
