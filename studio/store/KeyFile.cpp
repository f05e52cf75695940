#include "studio/store/KeyFile.h"

#include <sys/stat.h>

#include "platform/base/File.h"
#include "platform/crypto/Secret.h"

namespace multiscene::studio {

namespace {

constexpr size_t kLetters = 52, kMost = 4096;

}  // namespace

std::string keyOf(const std::filesystem::path& file) {
    if (!platform::isFile(file)) {
        const std::string key = platform::randomLetters(kLetters);
        platform::writeFileAtomically(file, key);
        ::chmod(file.c_str(), 0600);
        return key;
    }
    const auto bytes = platform::readFile(file, kMost);
    if (bytes.size() < kLetters)
        throw platform::Error(platform::ErrorKind::Failed, "is no key; remove it, and a new one is made",
                              file.string());
    return {bytes.begin(), bytes.end()};
}

}  // namespace multiscene::studio
