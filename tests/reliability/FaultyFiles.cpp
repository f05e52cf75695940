// A library to preload: it lists every call with which a process and those that it forks reach into one
// folder, and lets one of them fail, or ends the process there. Every call means every system call, those
// that libraries make among themselves too: a filter in the kernel sends them to a handler here. For x86-64.
//
// FAULTS_BELOW  the folder
// FAULTS_STATE  a file of sizeof(State) zeros outside of it, where the list is kept: "KIND PATH#TURN" a line,
// PATH below
//               the folder and without what is random in it
// FAULTS_AT     which of these lines it is to happen at; nothing happens without
// FAULTS_DO     the number of an error; "short": half of what is read or written; "kill", "kill-after"
// FAULTS_EVER   the kinds that fail from then on, with a blank around each; absent: that call alone fails
#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

extern "C" const char afterOwnCall[];

/// The only system call that the filter lets pass.
extern "C" long ownCall(long number, long a = 0, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0);
asm(R"(
    .text
    .globl ownCall, afterOwnCall
    .hidden ownCall, afterOwnCall
    .type ownCall, @function
ownCall:
    mov %rdi, %rax
    mov %rsi, %rdi
    mov %rdx, %rsi
    mov %rcx, %rdx
    mov %r8, %r10
    mov %r9, %r8
    mov 8(%rsp), %r9
    syscall
afterOwnCall:
    ret
)");

namespace {

// What a call does, in the words of the list.
enum class Kind {
    Other,
    Open,
    Read,
    Write,
    Sync,
    Close,
    Rename,
    Link,
    Unlink,
    Rmdir,
    Mkdir,
    Resize,
    Attribute,
    List,
    Map,
    Look,
    Lock
};
constexpr const char* kKindNames[] = {"other",     "open", "read",   "write", "sync",  "close",
                                      "rename",    "link", "unlink", "rmdir", "mkdir", "resize",
                                      "attribute", "list", "map",    "look",  "lock"};
constexpr const char* kCreate = "create";  // an Open that may make the file

// Where a call says which file it means.
enum class Place { Path0, At0, At1, At2, Descriptor0, Descriptor2, Descriptor4 };

struct Described {
    long number;
    Kind kind;
    Place place;
};

constexpr Described kCalls[] = {
    {SYS_open, Kind::Open, Place::Path0},
    {SYS_creat, Kind::Open, Place::Path0},
    {SYS_openat, Kind::Open, Place::At0},
    {SYS_read, Kind::Read, Place::Descriptor0},
    {SYS_pread64, Kind::Read, Place::Descriptor0},
    {SYS_readv, Kind::Read, Place::Descriptor0},
    {SYS_write, Kind::Write, Place::Descriptor0},
    {SYS_pwrite64, Kind::Write, Place::Descriptor0},
    {SYS_writev, Kind::Write, Place::Descriptor0},
    {SYS_sendfile, Kind::Write, Place::Descriptor0},
    {SYS_copy_file_range, Kind::Write, Place::Descriptor2},
    {SYS_fsync, Kind::Sync, Place::Descriptor0},
    {SYS_fdatasync, Kind::Sync, Place::Descriptor0},
    {SYS_syncfs, Kind::Sync, Place::Descriptor0},
    {SYS_close, Kind::Close, Place::Descriptor0},
    {SYS_rename, Kind::Rename, Place::Path0},
    {SYS_renameat, Kind::Rename, Place::At0},
    {SYS_renameat2, Kind::Rename, Place::At0},
    {SYS_link, Kind::Link, Place::Path0},
    {SYS_linkat, Kind::Link, Place::At2},
    {SYS_symlink, Kind::Link, Place::Path0},
    {SYS_symlinkat, Kind::Link, Place::At1},
    {SYS_unlink, Kind::Unlink, Place::Path0},
    {SYS_unlinkat, Kind::Unlink, Place::At0},
    {SYS_rmdir, Kind::Rmdir, Place::Path0},
    {SYS_mkdir, Kind::Mkdir, Place::Path0},
    {SYS_mkdirat, Kind::Mkdir, Place::At0},
    {SYS_ftruncate, Kind::Resize, Place::Descriptor0},
    {SYS_truncate, Kind::Resize, Place::Path0},
    {SYS_fallocate, Kind::Resize, Place::Descriptor0},
    {SYS_chmod, Kind::Attribute, Place::Path0},
    {SYS_fchmod, Kind::Attribute, Place::Descriptor0},
    {SYS_fchmodat, Kind::Attribute, Place::At0},
    {SYS_setxattr, Kind::Attribute, Place::Path0},
    {SYS_removexattr, Kind::Attribute, Place::Path0},
    {SYS_utimensat, Kind::Attribute, Place::At0},
    {SYS_getdents64, Kind::List, Place::Descriptor0},
    {SYS_mmap, Kind::Map, Place::Descriptor4},
    {SYS_stat, Kind::Look, Place::Path0},
    {SYS_lstat, Kind::Look, Place::Path0},
    {SYS_fstat, Kind::Look, Place::Descriptor0},
    {SYS_newfstatat, Kind::Look, Place::At0},
    {SYS_statx, Kind::Look, Place::At0},
    {SYS_access, Kind::Look, Place::Path0},
    {SYS_faccessat, Kind::Look, Place::At0},
    {SYS_faccessat2, Kind::Look, Place::At0},
    {SYS_readlink, Kind::Look, Place::Path0},
    {SYS_readlinkat, Kind::Look, Place::At0},
    {SYS_flock, Kind::Lock, Place::Descriptor0},
    {SYS_fcntl, Kind::Lock, Place::Descriptor0},
};

constexpr size_t kMostPath = 4096;

/// Shared by all processes.
struct State {
    struct Turns {
        std::atomic<uint64_t> label;  ///< its hash; 0: free
        std::atomic<uint32_t> count;
    };
    std::atomic<uint32_t> hits;  ///< calls that were made to fail
    std::atomic<uint32_t> used;  ///< bytes of the list
    Turns turns[4096];
    char list[1 << 20];
};

struct Plan {
    char folder[kMostPath] = {}, at[2 * kMostPath] = {}, ever[256] = {};
    size_t folderSize = 0;
    long error = 0;
    bool isShort = false, kills = false, killsAfter = false;
};

State* state = nullptr;
Plan plan;

struct Call {
    long number;
    long arguments[6];

    long make() const {
        const long* a = arguments;
        return ownCall(number, a[0], a[1], a[2], a[3], a[4], a[5]);
    }
};

size_t readLink(const char* link, char* target) {
    const long size = ownCall(SYS_readlink, long(link), long(target), kMostPath - 1);
    const size_t length = size > 0 ? size_t(size) : 0;
    target[length] = 0;
    return length;
}

size_t pathOfDescriptor(int descriptor, char* path) {
    char link[64];
    if (descriptor == AT_FDCWD)
        std::snprintf(link, sizeof link, "/proc/self/cwd");
    else
        std::snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    return readLink(link, path);
}

/// Without doubled slashes, "/." and a slash at the end.
void simplify(char* path) {
    char* to = path;
    for (const char* from = path; *from; ++from) {
        if (from[0] == '/' && (from[1] == '/' || from[1] == 0)) continue;
        if (from[0] == '/' && from[1] == '.' && (from[2] == '/' || from[2] == 0)) {
            ++from;
            continue;
        }
        *to++ = *from;
    }
    *to = 0;
}

void pathOf(int folder, const char* name, char* path) {
    size_t used = 0;
    if (!name || !*name || name[0] != '/') used = pathOfDescriptor(folder, path);
    if (name && *name) {
        if (std::strncmp(name, "/proc/self/fd/", 14) == 0 && !std::strchr(name + 14, '/')) {
            readLink(name, path);
            return;
        }
        std::snprintf(path + used, kMostPath - used, name[0] == '/' ? "%s" : "/%s", name);
    }
    simplify(path);
}

void pathOf(const Call& call, Place place, char* path) {
    const long* a = call.arguments;
    switch (place) {
        case Place::Path0:
            // Names that a link or a move gives are the more telling ones, and lie second.
            if (call.number == SYS_rename || call.number == SYS_link || call.number == SYS_symlink)
                return pathOf(AT_FDCWD, reinterpret_cast<const char*>(a[1]), path);
            return pathOf(AT_FDCWD, reinterpret_cast<const char*>(a[0]), path);
        case Place::At0:
            if (call.number == SYS_renameat || call.number == SYS_renameat2)
                return pathOf(int(a[2]), reinterpret_cast<const char*>(a[3]), path);
            return pathOf(int(a[0]), reinterpret_cast<const char*>(a[1]), path);
        case Place::At1:
            return pathOf(int(a[1]), reinterpret_cast<const char*>(a[2]), path);
        case Place::At2:
            return pathOf(int(a[2]), reinterpret_cast<const char*>(a[3]), path);
        case Place::Descriptor0:
            pathOfDescriptor(int(a[0]), path);
            return;
        case Place::Descriptor2:
            pathOfDescriptor(int(a[2]), path);
            return;
        case Place::Descriptor4:
            pathOfDescriptor(int(a[4]), path);
            return;
    }
}

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }
bool isHexadecimal(char letter) { return isDigit(letter) || (letter >= 'a' && letter <= 'f'); }

/// The length of what differs from run to run: "4711-0123456789abcdef", or "#4711" as nameless files are
/// called.
size_t randomPart(const char* text) {
    constexpr size_t digitsAfter = 16;
    size_t digits = text[0] == '#' ? 1 : 0;
    while (isDigit(text[digits])) ++digits;
    if (digits == 0 || text[0] == '#') return digits > 1 ? digits : 0;
    if (text[digits] != '-') return 0;
    for (size_t at = 1; at <= digitsAfter; ++at)
        if (!isHexadecimal(text[digits + at])) return 0;
    return digits + 1 + digitsAfter;
}

void appendWithoutRandom(char* label, size_t size, const char* path) {
    char* to = label + std::strlen(label);
    for (char before = '/'; *path && to + 2 < label + size;) {
        const size_t random = isDigit(before) ? 0 : randomPart(path);
        before = *path;
        *to++ = random ? '*' : *path;
        path += random ? random : 1;
    }
    *to = 0;
}

bool isBelowProc(const Call& call, Place place) {
    if (place != Place::Path0 && place != Place::At0) return false;
    const auto* path = reinterpret_cast<const char*>(call.arguments[place == Place::At0 ? 1 : 0]);
    return path && std::strncmp(path, "/proc/", 6) == 0;
}

Kind kindOf(const Call& call, Kind kind, Place place) {
    if (call.number == SYS_unlinkat && (call.arguments[2] & AT_REMOVEDIR)) return Kind::Rmdir;
    if (call.number == SYS_fcntl) {
        const long what = call.arguments[1];
        const bool locks = what == F_SETLK || what == F_SETLKW || what == F_OFD_SETLK || what == F_OFD_SETLKW;
        return locks ? Kind::Lock : Kind::Other;
    }
    if (call.number == SYS_mmap && (call.arguments[3] & MAP_ANONYMOUS)) return Kind::Other;
    // What the kernel says about a process lies on no disk.
    if (kind == Kind::Look && isBelowProc(call, place)) return Kind::Other;
    return kind;
}

bool mayCreate(const Call& call) {
    const long flags = call.arguments[call.number == SYS_openat ? 2 : 1];
    return call.number == SYS_creat || (flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE;
}

uint32_t turnOf(const char* label) {
    uint64_t hash = 1469598103934665603u;
    for (const char* letter = label; *letter; ++letter)
        hash = (hash ^ static_cast<unsigned char>(*letter)) * 1099511628211u;
    hash |= 1;
    constexpr size_t count = sizeof state->turns / sizeof *state->turns;
    for (size_t at = hash % count;; at = (at + 1) % count) {
        uint64_t expected = 0;
        State::Turns& turns = state->turns[at];
        if (turns.label.compare_exchange_strong(expected, hash) || expected == hash) return ++turns.count;
    }
}

void append(const char* label) {
    const auto size = uint32_t(std::strlen(label));
    const uint32_t at = state->used.fetch_add(size + 1);
    if (at + size + 1 > sizeof state->list) return;
    std::memcpy(state->list + at, label, size);
    state->list[at + size] = '\n';
}

/// Writes half of what is to be written, or reads half.
long makeHalf(Call call, Kind kind) {
    iovec first{};
    switch (call.number) {
        case SYS_readv:
        case SYS_writev:
            first = *reinterpret_cast<const iovec*>(call.arguments[1]);
            if (first.iov_len > 1) first.iov_len /= 2;
            call.arguments[1] = long(&first);
            call.arguments[2] = 1;
            break;
        case SYS_sendfile:
            call.arguments[3] = (call.arguments[3] + 1) / 2;
            break;
        case SYS_copy_file_range:
            call.arguments[4] = (call.arguments[4] + 1) / 2;
            break;
        default:
            if (kind == Kind::Read || kind == Kind::Write) call.arguments[2] = (call.arguments[2] + 1) / 2;
    }
    return call.make();
}

[[noreturn]] void endProcess() {
    ownCall(SYS_kill, ownCall(SYS_getpid), SIGKILL);
    for (;;) ownCall(SYS_pause);
}

long fail(const Call& call, Kind kind) {
    ++state->hits;
    if (plan.kills) endProcess();
    if (plan.isShort) return makeHalf(call, kind);
    if (plan.killsAfter) {
        call.make();
        endProcess();
    }
    if (kind == Kind::Close) call.make();  // whatever it answers, the descriptor is gone
    return -plan.error;
}

bool isDoomed(const char* label, const char* kindName) {
    if (!plan.at[0]) return false;
    if (std::strcmp(label, plan.at) == 0) return true;
    char word[32];
    std::snprintf(word, sizeof word, " %s ", kindName);
    return state->hits > 0 && std::strstr(plan.ever, word);
}

long answer(const Call& call, const Described& described) {
    const Kind kind = kindOf(call, described.kind, described.place);
    if (kind == Kind::Other) return call.make();
    char path[kMostPath];
    pathOf(call, described.place, path);
    const bool isBelow = std::strncmp(path, plan.folder, plan.folderSize) == 0 &&
                         (path[plan.folderSize] == '/' || path[plan.folderSize] == 0);
    if (!isBelow) return call.make();

    const char* kindName = kind == Kind::Open && mayCreate(call) ? kCreate : kKindNames[int(kind)];
    char label[kMostPath + 64];
    std::snprintf(label, sizeof label, "%s ", kindName);
    appendWithoutRandom(label, sizeof label - 16, path + plan.folderSize);
    const uint32_t turn = turnOf(label);
    std::snprintf(label + std::strlen(label), 16, "#%u", turn);
    append(label);
    return isDoomed(label, kindName) ? fail(call, kind) : call.make();
}

void onCall(int, siginfo_t*, void* context) {
    const int before = errno;
    greg_t* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    const Call call{registers[REG_RAX],
                    {registers[REG_RDI], registers[REG_RSI], registers[REG_RDX], registers[REG_R10],
                     registers[REG_R8], registers[REG_R9]}};
    for (const Described& described : kCalls)
        if (described.number == call.number) {
            registers[REG_RAX] = answer(call, described);
            break;
        }
    errno = before;
}

/// Where in a call's description the filter finds a number's lower half.
constexpr unsigned lowerHalf(size_t offset) { return unsigned(offset); }
constexpr unsigned upperHalf(size_t offset) { return unsigned(offset + 4); }

bool installFilter() {
    constexpr size_t most = 2 * (sizeof kCalls / sizeof *kCalls) + 16;
    sock_filter filter[most];
    unsigned short count = 0;
    const auto add = [&](unsigned short code, unsigned value, unsigned char yes, unsigned char no) {
        filter[count++] = {code, yes, no, value};
    };
    const auto load = [&](unsigned offset) { add(BPF_LD | BPF_W | BPF_ABS, offset, 0, 0); };
    const auto answerWith = [&](unsigned action) { add(BPF_RET | BPF_K, action, 0, 0); };
    constexpr unsigned short isEqual = BPF_JMP | BPF_JEQ | BPF_K, hasBits = BPF_JMP | BPF_JSET | BPF_K;
    constexpr size_t pointer = offsetof(seccomp_data, instruction_pointer);
    const auto own = reinterpret_cast<uint64_t>(afterOwnCall);

    load(lowerHalf(pointer));
    add(isEqual, unsigned(own), 0, 3);
    load(upperHalf(pointer));
    add(isEqual, unsigned(own >> 32), 0, 1);
    answerWith(SECCOMP_RET_ALLOW);
    load(offsetof(seccomp_data, nr));
    for (const Described& described : kCalls) {
        if (described.number == SYS_mmap) continue;
        add(isEqual, unsigned(described.number), 0, 1);
        answerWith(SECCOMP_RET_TRAP);
    }
    // Memory alone is asked for while signals are held back, and none of a file's.
    add(isEqual, SYS_mmap, 0, 3);
    load(lowerHalf(offsetof(seccomp_data, args) + 3 * sizeof(uint64_t)));
    add(hasBits, MAP_ANONYMOUS, 1, 0);
    answerWith(SECCOMP_RET_TRAP);
    answerWith(SECCOMP_RET_ALLOW);

    const sock_fprog program{count, filter};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

void copyVariable(const char* name, char* to, size_t size) {
    const char* const value = std::getenv(name);
    std::snprintf(to, size, "%s", value ? value : "");
}

void readPlan() {
    copyVariable("FAULTS_BELOW", plan.folder, sizeof plan.folder);
    copyVariable("FAULTS_AT", plan.at, sizeof plan.at);
    copyVariable("FAULTS_EVER", plan.ever, sizeof plan.ever);
    plan.folderSize = std::strlen(plan.folder);
    char what[32];
    copyVariable("FAULTS_DO", what, sizeof what);
    plan.isShort = std::strcmp(what, "short") == 0;
    plan.kills = std::strcmp(what, "kill") == 0;
    plan.killsAfter = std::strcmp(what, "kill-after") == 0;
    plan.error = std::strtol(what, nullptr, 10);
}

[[gnu::constructor]] void begin() {
    const char* const file = std::getenv("FAULTS_STATE");
    if (!file) return;
    readPlan();
    const int descriptor = ::open(file, O_RDWR | O_CLOEXEC);
    void* const memory =
        descriptor < 0 ? MAP_FAILED
                       : ::mmap(nullptr, sizeof(State), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    struct sigaction action {};
    action.sa_sigaction = onCall;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    if (memory == MAP_FAILED || ::close(descriptor) != 0 || ::sigaction(SIGSYS, &action, nullptr) != 0)
        std::abort();
    state = static_cast<State*>(memory);
    if (!installFilter()) std::abort();
}

}  // namespace
