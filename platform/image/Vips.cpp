#include "platform/image/Vips.h"

#include <vips/vips8>

#include <algorithm>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/base/Memory.h"

namespace platform {

namespace {

void ignoreLog(const gchar*, GLogLevelFlags, const gchar*, gpointer) {}

void initialize() {
    if (vips_init("multiscene") != 0) throw Error(ErrorKind::Failed, "the picture library does not start");
    // Loaders that were not written for hostile files stay closed.
    vips_block_untrusted_set(TRUE);
    // No picture is decoded twice in the same way, and two threads are what a small server has.
    vips_cache_set_max(0);
    vips_concurrency_set(2);
    // A damaged file can give one warning a row.
    g_log_set_handler("VIPS", static_cast<GLogLevelFlags>(G_LOG_LEVEL_MASK), ignoreLog, nullptr);
}

}  // namespace

void startVips() {
    static std::once_flag once;
    std::call_once(once, initialize);
}

Error pictureError(const ImageSource& source, const char* message) {
    const std::string_view text(message);
    std::string line(text.substr(0, text.find('\n')));
    vips_error_clear();
    // The library names the descriptor that it was given, which means nothing to the user.
    if (line.find("/proc/self/fd/") != std::string::npos) line.clear();
    if (line.find("Resource temporarily unavailable") != std::string::npos ||
        (line.find("out of memory") != std::string::npos && memoryIsShort()))
        return Error(ErrorKind::Transient, "out of memory", source.name);
    return Error(source.kind,
                 line.empty() ? "is not a picture that can be read" : "cannot be read as a picture: " + line,
                 source.name);
}

}  // namespace platform
