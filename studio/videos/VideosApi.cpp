#include "studio/videos/VideosApi.h"

#include <fcntl.h>

#include <algorithm>

#include "platform/base/File.h"
#include "platform/base/Utf8.h"
#include "platform/qr/QrCode.h"
#include "studio/api/LinkAddress.h"
#include "studio/api/Paging.h"
#include "studio/api/Problem.h"
#include "studio/api/Schema.h"
#include "studio/jobs/Once.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Value;
using platform::http::Answer;

namespace {

constexpr int64_t kHour = 3600 * 1000;
constexpr int64_t kMostHours = 24 * 30;

Value videoSchema() {
    return schema::object(
        {{"id", schema::text()},
         {"title", schema::text()},
         {"job", schema::text()},
         {"template", schema::object({{"id", schema::integer()}, {"title", schema::text()}})},
         {"bytes", schema::integer()},
         {"width", schema::integer()},
         {"height", schema::integer()},
         {"seconds", schema::number()},
         {"frames", schema::integer()},
         {"hasSound", schema::boolean()},
         {"kept", schema::boolean()},
         {"created", schema::time()},
         {"expires", schema::orNull(schema::time())},
         {"file", schema::address()},
         {"poster", schema::address()}});
}

/// The title as a file's name, for browsers old and new: what is not plain is left out of the one, and
/// escaped in the other.
std::string fileNamesOf(const Video& video) {
    constexpr size_t most = 120;  // bytes
    constexpr const char* digits = "0123456789ABCDEF";
    std::string plain, escaped, title = video.title.substr(0, most);
    // The last letter may have been cut in two.
    title.resize(std::min(title.size(), platform::firstInvalidUtf8(title)));
    for (const char letter : title) {
        const auto byte = static_cast<unsigned char>(letter);
        const bool isPlain = byte < 0x80 && (std::isalnum(byte) || letter == '-' || letter == '_');
        const bool isOther = byte >= 0x80;
        if (isPlain || letter == ' ') plain += letter == ' ' ? '-' : letter;
        if (isPlain || letter == ' ') escaped += letter == ' ' ? '-' : letter;
        if (isOther) escaped += {'%', digits[byte >> 4], digits[byte & 15]};
    }
    if (plain.empty()) plain = "video";
    if (escaped.empty()) escaped = plain;
    return "filename=\"" + plain + ".mp4\"; filename*=UTF-8''" + escaped + ".mp4";
}

Answer fileAnswer(const fs::path& path, const char* type) {
    platform::FileHandle file = platform::openFile(path, O_RDONLY | O_NOFOLLOW);
    if (!file) throw notFound("file");
    return Answer::ofFile(std::move(file), type);
}

Answer videoAnswer(const VideoStore& videos, const Video& video, bool isDownload) {
    return fileAnswer(videos.fileOf(video.id), "video/mp4")
        .with("ETag", "\"" + video.id + "\"")
        .with("Cache-Control", "private, no-cache")
        .with("Content-Disposition", (isDownload ? "attachment; " : "inline; ") + fileNamesOf(video));
}

}  // namespace

std::vector<Route> VideosApi::routes() {
    const auto bound = [this](void (VideosApi::*method)(ApiRequest&, Responder&)) {
        return [this, method](ApiRequest& request, Responder& responder) {
            (this->*method)(request, responder);
        };
    };
    const Value video = videoSchema();
    const Result shown{200, "application/json", video};
    const std::string one = "/api/v1/videos/{id}";
    return {
        {.method = "GET",
         .pattern = "/api/v1/videos",
         .summary = "Finished videos, the newest first",
         .query = paging::parameters(),
         .results = {{200, "application/json", paging::schema("videos", video)}},
         .handle = bound(&VideosApi::list)},
        {.method = "GET",
         .pattern = one,
         .summary = "A finished video",
         .results = {shown},
         .handle = [this](ApiRequest& request,
                          Responder& responder) { responder.answer(json(200, valueOf(own(request)))); }},
        {.method = "GET",
         .pattern = one + "/file",
         .summary = "The video itself, whole or in part",
         .query = {{"download", "1: to be kept, not played"}},
         .results = {{200, "video/mp4", {}}},
         .handle = bound(&VideosApi::file)},
        {.method = "GET",
         .pattern = one + "/poster.jpg",
         .summary = "A picture of it",
         .results = {{200, "image/jpeg", {}}},
         .handle = bound(&VideosApi::poster)},
        {.method = "GET",
         .pattern = one + "/qr.svg",
         .summary = "A link to it, good for an hour, for cameras",
         .results = {{200, "image/svg+xml", {}}},
         .handle = bound(&VideosApi::qr)},
        {.method = "PATCH",
         .pattern = one,
         .access = Access::Make,
         .body = Body::json(schema::object({{"title?", schema::text(200)}, {"kept?", schema::boolean()}})),
         .summary = "Names it, keeps it",
         .results = {shown},
         .handle = bound(&VideosApi::change)},
        {.method = "DELETE",
         .pattern = one,
         .access = Access::Make,
         .summary = "Removes it",
         .query = {{"photos", "true: and what was uploaded for it, unless a job needs it"}},
         .results = {{204, "", {}}},
         .handle = bound(&VideosApi::remove)},
        {.method = "POST",
         .pattern = one + "/links",
         .access = Access::Make,
         .body = Body::json(schema::object({{"hours", schema::integer(1, kMostHours)}})),
         .summary = "A link to it for who has no session",
         .results = {{201, "application/json",
                      schema::object({{"url", schema::address()}, {"expires", schema::time()}})}},
         .handle = bound(&VideosApi::link)},
        {.method = "GET",
         .pattern = "/s/{token}",
         .access = Access::Public,
         .summary = "The video of a link",
         .results = {{200, "video/mp4", {}}},
         .handle = bound(&VideosApi::linked)},
    };
}

Video VideosApi::own(const ApiRequest& request) {
    const auto video = shop_->videos.find(request.id(), request.session.id);
    if (!video) throw notFound("video");
    return *video;
}

void VideosApi::list(ApiRequest& request, Responder& responder) {
    const auto page = paging::of(request);
    Value::Array videos;
    for (const Video& video : shop_->videos.list(request.session.id, page.limit + 1, page.cursor))
        videos.push_back(valueOf(video));
    responder.answer(json(200, paging::answer("videos", std::move(videos), page)));
}

void VideosApi::file(ApiRequest& request, Responder& responder) {
    const bool isDownload = request.head.parameter("download").value_or("") == "1";
    responder.answer(videoAnswer(shop_->videos, own(request), isDownload));
}

void VideosApi::poster(ApiRequest& request, Responder& responder) {
    responder.answer(fileAnswer(shop_->videos.posterOf(own(request).id), "image/jpeg")
                         .with("Cache-Control", "private, max-age=86400"));
}

std::string VideosApi::addressOf(const ApiRequest& request, const std::string& token) const {
    return linkAddress(shop_->parts.settings, request.head, "/s/" + token);
}

void VideosApi::qr(ApiRequest& request, Responder& responder) {
    const std::string token = links_.token(own(request).id, nowMs() + kHour);
    responder.answer(Answer::text(200, platform::QrCode(addressOf(request, token)).svg(), "image/svg+xml"));
}

void VideosApi::change(ApiRequest& request, Responder& responder) {
    Video video = own(request);
    if (request.body.has("title")) video.title = request.body.string("title");
    if (request.body.has("kept")) video.isKept = request.body.boolean("kept");
    shop_->videos.change(video.id, video.title, video.isKept);
    shop_->events.tell({request.session.id, video.job}, "video", valueOf(video));
    responder.answer(json(200, valueOf(video)));
}

void VideosApi::remove(ApiRequest& request, Responder& responder) {
    const Video video = own(request);
    shop_->videos.remove(video.id);
    shop_->queue.expireThoseWithoutVideo();
    if (request.head.parameter("photos").value_or("") == "true") shop_->uploads.removeOf(video.job);
    responder.answer(Answer(204));
}

void VideosApi::link(ApiRequest& request, Responder& responder) {
    responder.answer(json(201, once(*shop_, request, [&] {
                              const int64_t expires = nowMs() + request.body.integer("hours") * kHour;
                              const std::string token = links_.token(own(request).id, expires);
                              return Value(Value::Dictionary{{"url", addressOf(request, token)},
                                                             {"expires", timeText(expires)}});
                          })));
}

void VideosApi::linked(ApiRequest& request, Responder& responder) {
    const auto id = links_.videoOf(request.path.at("token"), nowMs());
    const auto video = id ? shop_->videos.find(*id) : std::nullopt;
    if (!video) throw Problem(404, "link-gone", "this link is not good any more");
    responder.answer(videoAnswer(shop_->videos, *video, false));
}

}  // namespace multiscene::studio
