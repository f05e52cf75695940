#include "platform/net/HttpPost.h"

#include <curl/curl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <memory>

#include "platform/base/Error.h"
#include "platform/net/HttpDownload.h"
#include "platform/net/PublicAddress.h"

namespace platform {

namespace {

constexpr size_t kMostAnswer = 64 << 10;  // bytes that somebody may talk for nothing

struct FreeHandle {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};

struct Sending {
    const HttpPost& post;
    bool isRefused = false;
    size_t heard = 0;
};

/// Where a name leads is known here, and nowhere earlier.
curl_socket_t openSocket(void* self, curlsocktype, curl_sockaddr* address) {
    auto& sending = *static_cast<Sending*>(self);
    sending.isRefused = !sending.post.reachesPrivate && !isPublicAddress(address->addr);
    if (sending.isRefused) return CURL_SOCKET_BAD;
    return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

size_t passOver(char*, size_t size, size_t count, void* self) {
    auto& sending = *static_cast<Sending*>(self);
    sending.heard += size * count;
    return sending.heard > kMostAnswer ? 0 : size * count;
}

int look(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
    const auto& sending = *static_cast<Sending*>(self);
    return sending.post.isCancelled && sending.post.isCancelled() ? 1 : 0;
}

std::unique_ptr<curl_slist, FreeList> headersOf(const HttpPost& post) {
    curl_slist* list = curl_slist_append(nullptr, "Expect:");
    for (const auto& [name, value] : post.headers)
        list = curl_slist_append(list, (name + ": " + value).c_str());
    return std::unique_ptr<curl_slist, FreeList>(list);
}

void configure(CURL* handle, Sending& sending) {
    const HttpPost& post = sending.post;
    curl_easy_setopt(handle, CURLOPT_URL, post.url.c_str());
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);  // no wait for a name that is still being looked up
    curl_easy_setopt(handle, CURLOPT_USERAGENT, "multiscene");
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_PROXY, "");
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, post.mostSeconds);
    curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(post.body.size()));
    curl_easy_setopt(handle, CURLOPT_POSTFIELDS, post.body.data());
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETFUNCTION, openSocket);
    curl_easy_setopt(handle, CURLOPT_OPENSOCKETDATA, &sending);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, passOver);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &sending);
    curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, look);
    curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &sending);
}

}  // namespace

int send(const HttpPost& post) {
    if (!isHttpUrl(post.url)) throw Error(ErrorKind::Usage, "is no http or https address", post.url);
    Sending sending{post};
    const std::unique_ptr<CURL, FreeHandle> handle(curl_easy_init());
    if (!handle) throw Error(ErrorKind::Transient, "the HTTP library does not start");
    configure(handle.get(), sending);
    const auto headers = headersOf(post);
    curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, headers.get());
    const CURLcode code = curl_easy_perform(handle.get());
    long status = 0;
    curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &status);
    if (code == CURLE_ABORTED_BY_CALLBACK) throw Error(ErrorKind::Cancelled, "cancelled");
    // Somebody who talks too much has answered all the same, and so has the one of several addresses that may
    // be reached.
    if (status >= 200 && (code == CURLE_OK || code == CURLE_WRITE_ERROR)) return static_cast<int>(status);
    if (sending.isRefused) throw Error(ErrorKind::Input, "its address is not one of the Internet");
    throw Error(ErrorKind::Transient, code == CURLE_OK ? "no answer" : curl_easy_strerror(code));
}

}  // namespace platform
