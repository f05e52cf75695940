#include "cli/OpenedPage.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "platform/base/Log.h"

namespace multiscene::cli {

bool hasDisplay() {
    for (const char* variable : {"WAYLAND_DISPLAY", "DISPLAY"})
        if (const char* value = std::getenv(variable); value && *value) return true;
    return false;
}

void openPage(const std::filesystem::path& file) {
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_init(&actions);
    // It may outlive the studio, and has signals of its own.
    sigset_t none, ignored;
    sigemptyset(&none);
    sigemptyset(&ignored);
    for (const int number : {SIGPIPE, SIGXFSZ}) sigaddset(&ignored, number);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setsigdefault(&attributes, &ignored);
    ::posix_spawnattr_setflags(&attributes,
                               POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID);
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::posix_spawn_file_actions_addopen(&actions, descriptor, "/dev/null", O_RDWR, 0);
    std::string program = "xdg-open", target = "file://" + file.string();
    char* words[] = {program.data(), target.data(), nullptr};
    pid_t process = 0;
    const int failure = ::posix_spawnp(&process, program.c_str(), &actions, &attributes, words, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    if (failure != 0) return platform::log::info("nothing opens the page: there is no xdg-open");
    std::thread([process] { ::waitpid(process, nullptr, 0); }).detach();
}

}  // namespace multiscene::cli
