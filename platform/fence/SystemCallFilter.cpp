#include "platform/fence/SystemCallFilter.h"

#include <fcntl.h>
#include <linux/seccomp.h>
#include <linux/sockios.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

namespace platform {

namespace {

using Filter = std::unique_ptr<void, void (*)(scmp_filter_ctx)>;

/// Names, because libseccomp knows those that this machine's headers do not; an unknown one is left out.
constexpr const char* kForbidden[] = {
    // being called
    "listen",
    "accept",
    "accept4",
    // programs and processes
    "execve",
    "execveat",
    "fork",
    "vfork",
    "setsid",
    "setpgid",
    "ptrace",
    "process_vm_readv",
    "process_vm_writev",
    "process_madvise",
    "pidfd_open",
    "pidfd_getfd",
    "pidfd_send_signal",
    "kcmp",
    "rt_sigqueueinfo",
    "rt_tgsigqueueinfo",
    "migrate_pages",
    "move_pages",
    // the system
    "mount",
    "umount2",
    "pivot_root",
    "chroot",
    "move_mount",
    "open_tree",
    "fsopen",
    "fsmount",
    "fsconfig",
    "fspick",
    "mount_setattr",
    "swapon",
    "swapoff",
    "setns",
    "unshare",
    "bpf",
    "userfaultfd",
    "perf_event_open",
    "add_key",
    "keyctl",
    "request_key",
    "init_module",
    "finit_module",
    "delete_module",
    "kexec_load",
    "kexec_file_load",
    "reboot",
    "acct",
    "quotactl",
    "settimeofday",
    "clock_settime",
    "clock_adjtime",
    "adjtimex",
    "sethostname",
    "setdomainname",
    "syslog",
    "fanotify_init",
    "name_to_handle_at",
    "open_by_handle_at",
    "lookup_dcookie",
    "io_uring_setup",
    "io_uring_enter",
    "io_uring_register",
    "iopl",
    "ioperm",
    "modify_ldt",
    "personality",
    "vhangup",
    "mknod",
    "mknodat",
    "setrlimit",
    "setuid",
    "setgid",
    "setreuid",
    "setregid",
    "setresuid",
    "setresgid",
    "setfsuid",
    "setfsgid",
    "setgroups",
    "capset",
    "memfd_secret",
    // memory and queues that other processes have, and that stay when this one ends
    "shmget",
    "shmat",
    "shmctl",
    "semget",
    "semctl",
    "msgget",
    "msgctl",
    "mq_open",
    "mq_unlink",
};

constexpr const char* kNetwork[] = {"socket", "connect", "bind"};

/// Owners, permissions, attributes and times of files, which Landlock does not guard.
constexpr const char* kAttributes[] = {
    "chmod",        "fchmod",        "fchmodat",     "fchmodat2", "chown",      "fchown",      "lchown",
    "fchownat",     "setxattr",      "lsetxattr",    "fsetxattr", "setxattrat", "removexattr", "lremovexattr",
    "fremovexattr", "removexattrat", "file_setattr", "utime",     "utimes",     "futimesat",   "utimensat",
};

class Rules {
  public:
    explicit Rules(scmp_filter_ctx filter) : filter_(filter) {}

    void forbid(const char* name) { add(SCMP_ACT_ERRNO(EPERM), number(name), {}); }
    void forbid(const char* name, scmp_arg_cmp when) { add(SCMP_ACT_ERRNO(EPERM), number(name), {when}); }
    void unknown(const char* name) { add(SCMP_ACT_ERRNO(ENOSYS), number(name), {}); }
    int failure() const { return failure_; }

  private:
    static int number(const char* name) { return seccomp_syscall_resolve_name(name); }

    void add(uint32_t action, int call, std::initializer_list<scmp_arg_cmp> conditions) {
        if (call == __NR_SCMP_ERROR) return;
        const int result = seccomp_rule_add_array(
            filter_, action, call, static_cast<unsigned>(conditions.size()), conditions.begin());
        // A call that this kind of processor does not have cannot be made.
        if (result != 0 && result != -EDOM) failure_ = -result;
    }

    scmp_filter_ctx filter_;
    int failure_ = 0;
};

void addRules(Rules& rules, bool allowsNetwork, bool allowsAttributes) {
    for (const char* name : kForbidden) rules.forbid(name);
    if (!allowsNetwork)
        for (const char* name : kNetwork) rules.forbid(name);
    if (!allowsAttributes)
        for (const char* name : kAttributes) rules.forbid(name);
    // Threads are made, processes are not. The newer call hides its flags: its caller then takes the older.
    rules.unknown("clone3");
    rules.forbid("clone", SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, 0));
    // Ending itself is allowed.
    const auto own = static_cast<scmp_datum_t>(::getpid());
    for (const char* name : {"kill", "tgkill"}) rules.forbid(name, SCMP_A0(SCMP_CMP_NE, own));
    rules.forbid("tkill");
    rules.forbid("prlimit64", SCMP_A2(SCMP_CMP_NE, 0));
    rules.forbid("socketpair", SCMP_A0(SCMP_CMP_NE, AF_UNIX));
    constexpr scmp_datum_t word = 0xffffffff;  // the kernel looks at no more of a request
    for (const scmp_datum_t request : {TIOCSTI, TIOCLINUX})
        rules.forbid("ioctl", SCMP_A1(SCMP_CMP_MASKED_EQ, word, request));
    // Whom the kernel signals when something can be read.
    for (const scmp_datum_t request : {FIOSETOWN, SIOCSPGRP})
        rules.forbid("ioctl", SCMP_A1(SCMP_CMP_MASKED_EQ, word, request));
    for (const scmp_datum_t command : {F_SETOWN, F_SETOWN_EX, F_SETSIG})
        rules.forbid("fcntl", SCMP_A1(SCMP_CMP_MASKED_EQ, word, command));
}

}  // namespace

bool hasSystemCallFilter() {
    uint32_t action = SECCOMP_RET_ERRNO;
    return ::syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

std::string forbidSystemCalls(bool allowsNetwork, bool allowsAttributes) {
    if (!hasSystemCallFilter())
        return "this kernel filters no system calls: network and programs can be reached";
    const Filter filter(seccomp_init(SCMP_ACT_ALLOW), seccomp_release);
    if (!filter) return "the filter of system calls cannot be made";
    Rules rules(filter.get());
    addRules(rules, allowsNetwork, allowsAttributes);
    seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_NNP, 0);
    const int failure = rules.failure() != 0 ? rules.failure() : -seccomp_load(filter.get());
    return failure == 0 ? "" : std::string("the filter of system calls fails: ") + std::strerror(failure);
}

}  // namespace platform
