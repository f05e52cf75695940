#include "studio/process/StartedChild.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <string_view>

#include "platform/base/Log.h"
#include "platform/fence/WorkerLimits.h"

namespace multiscene::studio {

using platform::FileHandle;

namespace {

constexpr int kConnection = 3;
constexpr int kSpare = 10;  ///< descriptors from here on are in nobody's way

/// What of the environment concerns the program: where it finds things, its language, proxies, drivers. A
/// name that ends in "_" stands for all that begin so.
constexpr std::string_view kPassedOn[] = {"HOME",
                                          "PATH",
                                          "TMPDIR",
                                          "USER",
                                          "LANG",
                                          "LANGUAGE",
                                          "LC_",
                                          "XDG_",
                                          "MULTISCENE_",
                                          "SSL_CERT_",
                                          "CURL_CA_BUNDLE",
                                          "http_proxy",
                                          "https_proxy",
                                          "HTTPS_PROXY",
                                          "all_proxy",
                                          "ALL_PROXY",
                                          "no_proxy",
                                          "NO_PROXY",
                                          "MESA_",
                                          "LIBGL_",
                                          "GALLIUM_",
                                          "EGL_",
                                          "LP_",
                                          "__GL_",
                                          "ASAN_",
                                          "UBSAN_",
                                          "TSAN_",
                                          "LSAN_",
                                          "LD_LIBRARY_PATH",
                                          "FONTCONFIG_"};

bool isPassedOn(std::string_view variable) {
    const std::string_view name = variable.substr(0, variable.find('='));
    return std::any_of(std::begin(kPassedOn), std::end(kPassedOn), [&](std::string_view known) {
        return known.ends_with('_') ? name.starts_with(known) : name == known;
    });
}

std::vector<std::string> environmentOf(const ChildProgram::Spec& spec) {
    std::vector<std::string> all;
    for (char** each = environ; each && *each; ++each) {
        const std::string_view variable(*each);
        const std::string name(variable.substr(0, variable.find('=')));
        if (isPassedOn(variable) && !spec.environment.contains(name)) all.emplace_back(variable);
    }
    for (const auto& [name, value] : spec.environment) all.push_back(name + "=" + value);
    return all;
}

std::vector<std::string> wordsOf(const ChildProgram::Spec& spec) {
    std::vector<std::string> words{spec.program.filename().string()};
    words.insert(words.end(), spec.arguments.begin(), spec.arguments.end());
    return words;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Out of the way of those that the child has.
FileHandle aside(int descriptor) {
    FileHandle copy(::fcntl(descriptor, F_DUPFD_CLOEXEC, kSpare));
    if (!copy) throw platform::errnoError(errno, "cannot start a program", "");
    return copy;
}

/// All that the child needs, made before it is: of a process with threads it may call nothing that locks.
struct Birth {
    std::vector<std::string> words, environment;
    std::vector<char*> wordPointers, environmentPointers;
    std::string program, folder;
    FileHandle input, output, errors, connection;
    int niceness = 0;
    pid_t studio = -1;
};

/// Calls nothing but what is safe in a child of a process with threads.
[[noreturn]] void becomeProgram(const Birth& birth) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM, 0, 0, 0);
    if (::getppid() != birth.studio) ::_exit(127);
    ::setsid();
    if (!birth.folder.empty() && ::chdir(birth.folder.c_str()) != 0) ::_exit(127);
    ::setpriority(PRIO_PROCESS, 0, birth.niceness);
    ::dup2(birth.input.descriptor(), STDIN_FILENO);
    ::dup2(birth.output.descriptor(), STDOUT_FILENO);
    if (birth.errors) ::dup2(birth.errors.descriptor(), STDERR_FILENO);
    unsigned kept = STDERR_FILENO;
    if (birth.connection) kept = static_cast<unsigned>(::dup2(birth.connection.descriptor(), kConnection));
    ::syscall(SYS_close_range, kept + 1, ~0U, 0);
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::execve(birth.program.c_str(), birth.wordPointers.data(), birth.environmentPointers.data());
    ::_exit(127);
}

}  // namespace

StartedChild startChild(const ChildProgram::Spec& spec) {
    int pipe[2];
    if (::pipe2(pipe, O_CLOEXEC) != 0) throw platform::errnoError(errno, "cannot start a program", "");
    StartedChild child;
    child.output = FileHandle(pipe[0]);
    const FileHandle writing(pipe[1]);
    ::fcntl(child.output.descriptor(), F_SETFL, O_NONBLOCK);

    Birth birth;
    birth.words = wordsOf(spec);
    birth.environment = environmentOf(spec);
    birth.wordPointers = pointersTo(birth.words);
    birth.environmentPointers = pointersTo(birth.environment);
    birth.program = spec.program.string();
    birth.input = platform::openFile("/dev/null", O_RDWR);
    birth.input = aside(birth.input.descriptor());
    birth.output = aside(writing.descriptor());
    // What it has to say comes as lines; the rest is for who looks for a fault.
    const bool isHeard = platform::log::isVerbose() || platform::isSanitized();
    if (!isHeard) birth.errors = aside(birth.input.descriptor());
    if (spec.connection) birth.connection = aside(spec.connection.descriptor());
    birth.folder = spec.folder.string();
    birth.niceness = spec.niceness;
    birth.studio = ::getpid();
    child.process = ::fork();
    if (child.process == 0) becomeProgram(birth);
    if (child.process < 0) throw platform::errnoError(errno, "cannot start a program", "");
    return child;
}

}  // namespace multiscene::studio
