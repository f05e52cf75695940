#include "studio/access/StartKey.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/base/File.h"
#include "platform/crypto/Secret.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::FileHandle;

namespace {

constexpr size_t kKeyLetters = 32;

/// Whole or not at all, and nobody else's from its first byte on.
void writePrivately(const fs::path& file, const std::string& text) {
    const fs::path beside = file.string() + ".new";
    std::error_code ignored;
    fs::remove(beside, ignored);
    const FileHandle handle =
        platform::openFile(beside, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (!handle) throw platform::errnoError(errno, "cannot create", beside.string());
    ::fchmod(handle.descriptor(), 0600);
    platform::writeAll(handle, text, beside.string());
    if (::rename(beside.c_str(), file.c_str()) != 0)
        throw platform::errnoError(errno, "cannot write", file.string());
}

}  // namespace

StartKey::StartKey(std::string page, fs::path file, fs::path opener)
    : page_(std::move(page)), file_(std::move(file)), opener_(std::move(opener)) {
    renew();
    if (!opener_.empty())
        writePrivately(opener_,
                       "<!doctype html><meta charset=\"utf-8\"><title>multiscene</title>"
                       "<meta http-equiv=\"refresh\" content=\"0;url=" +
                           url() + "\">\n");
}

StartKey::~StartKey() {
    std::error_code ignored;
    fs::remove(file_, ignored);
    if (!opener_.empty()) fs::remove(opener_, ignored);
}

void StartKey::renew() {
    const std::string key = platform::randomLetters(kKeyLetters);
    writePrivately(file_, page_ + "#key=" + key + "\n");
    key_ = key;  // not before: one that stands nowhere would let nobody in
}

bool StartKey::take(const std::string& key) {
    if (!platform::sameSecret(key, key_)) return false;
    renew();
    return true;
}

}  // namespace multiscene::studio
