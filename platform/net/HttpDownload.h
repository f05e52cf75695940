// One file over HTTP or HTTPS, streamed to disk.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/base/Error.h"
#include "platform/base/Limits.h"

namespace platform {

struct HttpDownloadOptions {
    uint64_t maxBytes = limitOf("maxArchiveBytes");
    int attempts = limitOf<int>("maxDownloadTries");  ///< connections made before giving up
    double retryDelaySeconds = 0.5;                   ///< before the second attempt; doubles each time
    long connectTimeoutSeconds = limitOf<long>("maxConnectSeconds");
    /// A connection that is slower than this for so long counts as broken.
    long minBytesPerSecond = limitOf<long>("minDownloadSpeed");
    long stallSeconds = limitOf<long>("maxStallSeconds");
    double maxSeconds = limitOf<double>("maxDownloadSeconds");  ///< for all attempts together
    /// Bytes so far, and bytes in all or 0 when the server does not say. On the calling thread.
    std::function<void(uint64_t received, uint64_t total)> progress;
    /// Asked several times a second.
    std::function<bool()> isCancelled;
};

struct HttpDownloadResult {
    uint64_t bytes = 0;
    int connections = 0;   ///< how many it took
    std::string finalUrl;  ///< after redirects
};

/// Fetches `url` into `file`, replacing it. Blocks. A broken transfer goes on where it stopped when the
/// server can name the version of its file and still has that one, else it starts again. Gives a sign of life
/// (activity::sign) all the while. Redirects stay within HTTP and HTTPS, and a URL that starts as HTTPS stays
/// there.
///
/// Certificates are verified against the system's authorities, or those of SSL_CERT_FILE (CURL_CA_BUNDLE) and
/// SSL_CERT_DIR; proxies are those of http_proxy, https_proxy and no_proxy.
///
/// Throws Error with the URL as its file, and leaves no file: Usage for another kind of URL, Failed when the
/// server refuses or the file is too large, Transient when the network or the server fails, Cancelled.
HttpDownloadResult downloadToFile(const std::string& url, const std::filesystem::path& file,
                                  const HttpDownloadOptions& options = {});

/// Whether a text is an http:// or https:// URL.
bool isHttpUrl(const std::string& text);

/// A URL for messages, without the name and password that it may hold.
std::string withoutCredentials(const std::string& url);

}  // namespace platform
