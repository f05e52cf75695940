#include "studio/page/PageApi.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/base/File.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::FileHandle;
using platform::http::Answer;
using platform::http::Responder;

namespace {

constexpr const char* kPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; media-src 'self' "
    "blob:; "
    "connect-src 'self'; manifest-src 'self'; worker-src 'self'; frame-ancestors 'none'; base-uri 'none'; "
    "form-action 'none'";
constexpr const char* kPermissions = "camera=(), microphone=(), geolocation=(), payment=(), usb=()";

struct Type {
    const char *ending, *contentType;
};
constexpr Type kTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".json", "application/json"},
    {".webmanifest", "application/manifest+json"},
    {".svg", "image/svg+xml"},
    {".png", "image/png"},
    {".woff2", "font/woff2"},
    {".txt", "text/plain; charset=utf-8"},
};

const char* typeOf(const std::string& name) {
    for (const Type& type : kTypes)
        if (name.ends_with(type.ending)) return type.contentType;
    return nullptr;
}

bool takesGzip(const platform::http::RequestHead& head) {
    return head.header("Accept-Encoding").find("gzip") != std::string::npos;
}

/// The same as long as nobody has built the page again.
std::string tagOf(const FileHandle& file) {
    struct stat info {};
    ::fstat(file.descriptor(), &info);
    return "\"" + std::to_string(info.st_size) + "-" + std::to_string(info.st_mtim.tv_sec) + "-" +
           std::to_string(info.st_mtim.tv_nsec) + "\"";
}

FileHandle openRegular(const fs::path& file) {
    FileHandle handle = platform::openFile(file, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    return handle && handle.isRegular() ? std::move(handle) : FileHandle();
}

}  // namespace

PageApi::PageApi(fs::path folder) : folder_(std::move(folder)) {}

std::vector<Route> PageApi::routes() {
    Route asset = routeTo("/assets/{name}", "");
    asset.handle = [this](ApiRequest& request, Responder& responder) {
        responder.answer(file(request, "assets/" + request.path.at("name"), true));
    };
    return {routeTo("/", "index.html"), routeTo("/{name}", ""), std::move(asset)};
}

/// An empty name: the one in the path.
Route PageApi::routeTo(const std::string& pattern, const std::string& name) const {
    return {.method = "GET",
            .pattern = pattern,
            .access = Access::Public,
            .summary = "The page",
            .results = {{200, "text/html", {}}},
            .handle = [this, name](ApiRequest& request, Responder& responder) {
                responder.answer(file(request, name.empty() ? request.path.at("name") : name, false));
            }};
}

Answer PageApi::file(const ApiRequest& request, const std::string& name, bool isHashed) const {
    const char* type = typeOf(name);
    if (!type) throw notFound("page");
    FileHandle plain = openRegular(folder_ / name);
    if (!plain && name == "index.html")
        return Answer::text(503, "the page is not built: cmake --build build --target studio_page\n");
    if (!plain) throw notFound("page");
    FileHandle packed = takesGzip(request.head) ? openRegular(folder_ / (name + ".gz")) : FileHandle();
    const bool isPacked = static_cast<bool>(packed);
    const std::string tag = tagOf(isPacked ? packed : plain);
    Answer answer = Answer::ofFile(isPacked ? std::move(packed) : std::move(plain), type)
                        .with("ETag", tag)
                        .with("Vary", "Accept-Encoding")
                        .with("Cache-Control", isHashed ? "public, max-age=31536000, immutable" : "no-cache")
                        .with("Content-Security-Policy", kPolicy)
                        .with("Permissions-Policy", kPermissions)
                        .with("Cross-Origin-Opener-Policy", "same-origin");
    if (isPacked) answer.with("Content-Encoding", "gzip");
    return answer;
}

}  // namespace multiscene::studio
