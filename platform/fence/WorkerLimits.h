// How much a worker may take.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/Limits.h"

namespace platform {

/// Defaults are those of Limits. A user changes them by their names in its table: a start and what is added
/// for frames and pixels, generous because a slow machine under load is no fault of the job, or a most, which
/// then is what the job may take whatever it makes.
///
/// Memory is what is resident and private, looked at several times a second by the supervisor. A limit of the
/// address space is of no use: graphics drivers and sanitizers reserve many times what they touch. What can
/// be written, touched or not, has a limit in the kernel of twice as much, so that one large request fails at
/// once. The number of a user's processes is no limit for one of them; the sandbox lets a worker start none,
/// and its threads are counted.
struct WorkerLimits {
    uint64_t memoryBytes = limitOf("maxJobMemory");
    uint64_t cpuSeconds = limitOf("maxJobCpuSeconds"), wallSeconds = limitOf("maxJobSeconds");
    uint64_t firstMemoryBytes = limitOf("jobMemory"), memoryBytesPerPixel = limitOf("jobMemoryPerPixel");
    uint64_t firstSeconds = limitOf("jobSeconds"), millisecondsPerFrame = limitOf("jobMillisecondsPerFrame"),
             nanosecondsPerPixel = limitOf("jobNanosecondsPerPixel");
    uint64_t firstFileBytes = limitOf("jobFileBytes"), fileBytesPerPixel = limitOf("jobFileBytesPerPixel");
    /// Between two signs of life: a file that is opened, a frame that is done.
    uint64_t stepCpuSeconds = limitOf("maxStepCpuSeconds"), stepSeconds = limitOf("maxStepSeconds");
    uint64_t fileBytes = limitOf("maxJobFileBytes");
    uint64_t openFiles = limitOf("maxJobOpenFiles");
    uint64_t threads = limitOf("maxJobThreads");

    /// What a job may take that makes so many frames (0: none; below: nobody knows) of so many pixels.
    WorkerLimits forJob(int64_t frames, int64_t pixels) const;

    /// "maxJobMemory=8589934592". Throws Error(Usage) for an unknown name or a value that is no number.
    void set(const std::string& nameAndValue);

    /// What the kernel watches, for the calling process, from now on. Limits that are lower already stay. No
    /// core is dumped.
    void apply() const;
};

/// Whether the program is built with a sanitizer, which maps memory and uses system calls as no program does.
bool isSanitized();

}  // namespace platform
