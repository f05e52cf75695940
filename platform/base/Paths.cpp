#include "platform/base/Paths.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <random>

#include "platform/base/Error.h"
#include "platform/base/PrivateFolder.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

fs::path& homeStorage() {
    static fs::path home;
    return home;
}

fs::path fromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value && *value ? fs::path(value) : fs::path();
}

fs::path findResources() {
    if (const fs::path set = fromEnvironment("MULTISCENE_RESOURCES"); !set.empty()) return fs::absolute(set);
    std::error_code ignored;
    const fs::path program = fs::read_symlink("/proc/self/exe", ignored);
    for (fs::path folder = program.parent_path(); folder != folder.root_path();
         folder = folder.parent_path()) {
        const fs::path candidate = folder / "share" / "multiscene";
        if (fs::is_directory(candidate / "shaders", ignored)) return candidate;
    }
    throw Error(ErrorKind::Failed, "the program's resources (share/multiscene) are missing",
                program.string());
}

}  // namespace

fs::path defaultDataHome() {
    if (const fs::path set = fromEnvironment("MULTISCENE_HOME"); !set.empty()) return fs::absolute(set);
    if (const fs::path xdg = fromEnvironment("XDG_DATA_HOME"); xdg.is_absolute()) return xdg / "multiscene";
    const fs::path home = fromEnvironment("HOME");
    return home.empty() ? privateTemporaryFolder() : home / ".local" / "share" / "multiscene";
}

void setDataHome(const fs::path& home) { homeStorage() = fs::absolute(home).lexically_normal(); }

const fs::path& dataHome() {
    if (homeStorage().empty()) setDataHome(defaultDataHome());
    return homeStorage();
}

const fs::path& resourcesFolder() {
    static const fs::path folder = findResources();
    return folder;
}

std::string uniqueIdentifier() {
    std::random_device random;
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%d-%08x%08x", static_cast<int>(getpid()), random(), random());
    return text.data();
}

}  // namespace platform
