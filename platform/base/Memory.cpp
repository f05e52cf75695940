#include "platform/base/Memory.h"

#include <glib.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>
#include <system_error>

#include "platform/base/Error.h"

namespace platform {

namespace {

constexpr size_t kEnough = size_t{512} << 20;  // bytes
constexpr uintptr_t kFirstPage = 65536;
constexpr size_t kPutAside = size_t{1} << 20;

std::atomic<LastWords> lastWords = nullptr;
std::atomic<void*> putAside = nullptr;
std::terminate_handler usualTermination = nullptr;

std::atomic<bool> isSilent = false;

void sayPlainly() {
    if (isSilent) return;
    constexpr std::string_view line = "multiscene: out of memory\n";
    const ssize_t ignored = ::write(STDERR_FILENO, line.data(), line.size());
    static_cast<void>(ignored);
}

[[noreturn]] void end() {
    std::free(putAside.exchange(nullptr));
    const LastWords say = lastWords.exchange(nullptr);
    try {
        if (say) say();
    } catch (...) {
        sayPlainly();
    }
    ::_exit(static_cast<int>(ErrorKind::Transient));
}

[[noreturn]] void terminate() {
    try {
        if (std::current_exception()) throw;
    } catch (const std::bad_alloc&) {
        end();
    } catch (const Error& error) {
        if (error.kind() == ErrorKind::Transient) end();
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::resource_unavailable_try_again) end();
    } catch (...) {
    }
    usualTermination();
    std::abort();
}

/// Graphics drivers do not look whether they got the memory that they asked for: they use the null pointer,
/// or abort. Every other crash stays what it is.
void hearCrash(int number, siginfo_t* info, void*) {
    const bool isNull = reinterpret_cast<uintptr_t>(info->si_addr) < kFirstPage;
    if ((number == SIGABRT || isNull) && memoryIsShort()) {
        sayPlainly();
        ::_exit(static_cast<int>(ErrorKind::Transient));
    }
    std::signal(number, SIG_DFL);
    // Nothing repeats a crash that was no access of memory, or that somebody else has sent.
    if (number == SIGABRT || info->si_code <= 0) std::raise(number);
}

void hearCrashes() {
    struct sigaction action {};
    action.sa_sigaction = hearCrash;
    action.sa_flags = SA_SIGINFO;
    for (const int number : {SIGSEGV, SIGABRT}) {
        struct sigaction known {};
        // A sanitizer's own handler stays.
        if (::sigaction(number, nullptr, &known) == 0 && known.sa_handler == SIG_DFL)
            ::sigaction(number, &action, nullptr);
    }
}

/// GLib ends the process after this call when it gets no memory or no thread.
void hearFatal(const gchar* domain, GLogLevelFlags level, const gchar* message, gpointer) {
    const std::string_view text = message ? message : "";
    if (text.find("allocate") != text.npos || text.find("thread") != text.npos) end();
    g_log_default_handler(domain, level, message, nullptr);
}

}  // namespace

bool memoryIsShort() {
    void* const memory = ::mmap(nullptr, kEnough, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return true;
    ::munmap(memory, kEnough);
    return false;
}

void leaveLastWordsToOthers() {
    isSilent = true;
    lastWords = nullptr;
}

void endOrderlyWithoutMemory(LastWords say) {
    lastWords = say;
    std::free(putAside.exchange(std::malloc(kPutAside)));
    usualTermination = std::set_terminate(terminate);
    constexpr int fatal = G_LOG_LEVEL_ERROR | G_LOG_FLAG_FATAL | G_LOG_FLAG_RECURSION;
    hearCrashes();
    g_log_set_handler("GLib", static_cast<GLogLevelFlags>(fatal), hearFatal, nullptr);
}

}  // namespace platform
