#include "platform/fence/Sandbox.h"

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <sstream>

#include "platform/fence/SystemCallFilter.h"
#include "platform/fence/WorkerLimits.h"

namespace platform {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSanitized = "built with a sanitizer, which needs forbidden system calls";

void dropCapabilities() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    // Where a service runs as the superuser, its users' files are still read.
    data[0].effective = data[0].permitted = 1U << CAP_DAC_OVERRIDE;
    __user_cap_data_struct now[2]{};
    if (::syscall(SYS_capget, &header, now) != 0) return;
    for (int half = 0; half < 2; ++half) {
        data[half].effective &= now[half].permitted;
        data[half].permitted &= now[half].permitted;
    }
    ::syscall(SYS_capset, &header, data);
    ::prctl(PR_CAP_AMBIENT, PR_CAP_AMBIENT_CLEAR_ALL, 0, 0, 0);
}

fs::path environmentPath(const char* name) {
    const char* value = std::getenv(name);
    return value ? fs::path(value) : fs::path();
}

/// Folders of a variable such as "A:B".
void addFolders(const char* name, std::vector<fs::path>& paths) {
    std::istringstream list(environmentPath(name).string());
    for (std::string path; std::getline(list, path, ':');)
        if (!path.empty()) paths.emplace_back(path);
}

void addUserFonts(std::vector<fs::path>& paths) {
    const fs::path home = environmentPath("HOME");
    const auto below = [&](const char* variable, const char* usual) {
        const fs::path set = environmentPath(variable);
        return set.empty() ? (home.empty() ? fs::path() : home / usual) : set;
    };
    if (!home.empty()) paths.push_back(home / ".fonts");
    for (const auto& [folder, name] : {std::pair{below("XDG_DATA_HOME", ".local/share"), "fonts"},
                                       std::pair{below("XDG_CONFIG_HOME", ".config"), "fontconfig"},
                                       std::pair{below("XDG_CACHE_HOME", ".cache"), "fontconfig"}})
        if (!folder.empty()) paths.push_back(folder / name);
}

}  // namespace

const char* SandboxState::word() const {
    switch (level) {
        case Level::Full:
            return "full";
        case Level::Partial:
            return "partial";
        case Level::None:
            return "none";
    }
    return "";
}

SandboxState SandboxState::of(std::vector<std::string> missing) {
    std::erase(missing, std::string());
    constexpr size_t walls = 2;
    const Level level = missing.empty() ? Level::Full : missing.size() < walls ? Level::Partial : Level::None;
    return {level, std::move(missing)};
}

SandboxState sandboxHere() {
    std::vector<std::string> missing;
    if (landlockVersion() < 2)
        missing.emplace_back(
            "this kernel has no Landlock, or an old one: every file of the user can be reached");
    if (isSanitized())
        missing.emplace_back(kSanitized);
    else if (!hasSystemCallFilter())
        missing.emplace_back("this kernel filters no system calls: network and programs can be reached");
    return SandboxState::of(std::move(missing));
}

SandboxState enterSandbox(const Reach& reach) {
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return SandboxState::of({"new privileges cannot be given up", "nothing else can be shut then"});
    dropCapabilities();
    std::vector<std::string> missing{confineWithLandlock(reach)};
    missing.push_back(isSanitized() ? kSanitized : forbidSystemCalls(reach.network, reach.attributes));
    return SandboxState::of(std::move(missing));
}

Reach reachOfLibraries() {
    Reach reach;
    reach.read = {"/usr", "/lib", "/lib32", "/lib64", "/opt", "/nix/store", "/gnu/store",
                  // settings of the loader, names, fonts, drivers
                  "/etc/ld.so.cache", "/etc/ld.so.conf", "/etc/ld.so.conf.d", "/etc/ld.so.preload",
                  "/etc/alternatives", "/etc/nsswitch.conf", "/etc/passwd", "/etc/localtime", "/etc/fonts",
                  "/etc/glvnd", "/etc/drirc", "/etc/egl", "/etc/OpenCL", "/etc/vulkan",
                  "/var/cache/fontconfig",
                  // the machine: processors, memory, graphics cards
                  "/proc", "/sys"};
    reach.devices = {"/dev/null",        "/dev/zero",
                     "/dev/full",        "/dev/random",
                     "/dev/urandom",     "/dev/dri",
                     "/dev/nvidiactl",   "/dev/nvidia-modeset",
                     "/dev/nvidia-uvm",  "/dev/nvidia-uvm-tools",
                     "/dev/nvidia-caps", "/dev/kfd",
                     "/dev/mali0",       "/dev/udmabuf"};
    for (int card = 0; card < 16; ++card) reach.devices.push_back("/dev/nvidia" + std::to_string(card));
    for (const char* name : {"LD_LIBRARY_PATH", "LIBGL_DRIVERS_PATH", "__EGL_VENDOR_LIBRARY_DIRS",
                             "__EGL_VENDOR_LIBRARY_FILENAMES", "FONTCONFIG_FILE", "FONTCONFIG_PATH"})
        addFolders(name, reach.read);
    addUserFonts(reach.read);
    return reach;
}

Reach reachOfNetwork() {
    Reach reach;
    reach.network = true;
    reach.read = {"/etc/resolv.conf",
                  "/etc/hosts",
                  "/etc/host.conf",
                  "/etc/gai.conf",
                  "/etc/services",
                  "/etc/protocols",
                  "/etc/hostname",
                  "/etc/ssl",
                  "/etc/pki",
                  "/etc/crypto-policies",
                  "/etc/ca-certificates",
                  "/usr/local/share/ca-certificates",
                  "/run/systemd/resolve",
                  "/run/resolvconf",
                  "/run/NetworkManager",
                  "/run/nscd",
                  "/var/lib/ca-certificates"};
    for (const char* name : {"SSL_CERT_FILE", "CURL_CA_BUNDLE", "SSL_CERT_DIR"}) addFolders(name, reach.read);
    return reach;
}

}  // namespace platform
