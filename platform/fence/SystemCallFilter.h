#pragma once

#include <string>

namespace platform {

/// Takes system calls away from the calling thread and those it starts, for good: network sockets and
/// connections (a pair of local ones can still be made), starting programs and processes, looking into or
/// ending other processes, mounting, namespaces, kernel keys, modules, BPF, performance counters, user
/// faults, io_uring, raising limits, typing into a terminal, System V and POSIX queues and shared memory,
/// owners, permissions, attributes and times of files. They fail with EPERM, so that a library that can do
/// without goes on. A list of what is forbidden, not of what is allowed: graphics drivers differ too much in
/// what they need.
///
/// With `allowsNetwork` sockets can be made and connected, as a download needs it; nobody is listened to.
/// With `allowsAttributes` what is said of owners, permissions, attributes and times does not hold.
///
/// Returns what does not hold, empty when all does. The process has given up new privileges before.
std::string forbidSystemCalls(bool allowsNetwork, bool allowsAttributes);

/// Whether this kernel filters system calls.
bool hasSystemCallFilter();

}  // namespace platform
