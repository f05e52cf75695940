// Private to platform/media: CPU time of other threads, for the statistics.
#pragma once

#include <string>

namespace platform {

/// Names the calling thread, cut to 15 characters. Threads that it starts inherit the name.
void nameThread(const std::string& name);

/// CPU seconds so far of all living threads of this process with that name (at most 15 characters).
double cpuSecondsOfThreadsNamed(const std::string& name);

}  // namespace platform
