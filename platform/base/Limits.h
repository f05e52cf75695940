#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// How much a template, and a user's photo, may ask for, and what a job may take. Far above what any needs,
/// and low enough that what is within them ends in time and fits into memory.
struct Limits {
    static constexpr uint64_t maxRecords = 1000;
    static constexpr uint64_t maxGroupScenes = 1000;
    static constexpr uint64_t maxSceneNodes = 20'000;
    static constexpr uint64_t maxSceneFiles = 2000;
    static constexpr uint64_t maxShaderBytes = uint64_t(64) << 10;
    static constexpr uint64_t maxShaderWords = 16'384;
    static constexpr uint64_t maxShaderStatementWords = 1024;
    static constexpr uint64_t maxShaderInlinedWords = 65'536;
    static constexpr uint64_t maxShaderArray = 1024;
    static constexpr uint64_t maxShaderWork = 2'000'000;
    static constexpr uint64_t maxPictureBytes = uint64_t(256) << 20;

    // What the process that does a job may take: a start, and more for what it makes, up to a most. They can
    // be changed (platform/fence/WorkerLimits.h).
    static constexpr uint64_t jobMemory = uint64_t(2) << 30;
    static constexpr uint64_t jobMemoryPerPixel = 256;
    static constexpr uint64_t jobSeconds = 3600;
    static constexpr uint64_t jobMillisecondsPerFrame = 2000;
    static constexpr uint64_t jobNanosecondsPerPixel = 10'000;
    static constexpr uint64_t jobFileBytes = uint64_t(1) << 30;
    static constexpr uint64_t jobFileBytesPerPixel = 4;
    static constexpr uint64_t maxJobMemory = uint64_t(4) << 30;
    static constexpr uint64_t maxJobCpuSeconds = 48 * 3600;
    static constexpr uint64_t maxJobSeconds = 24 * 3600;
    static constexpr uint64_t maxStepCpuSeconds = 120;
    static constexpr uint64_t maxStepSeconds = 300;
    static constexpr uint64_t maxJobFileBytes = uint64_t(16) << 30;
    static constexpr uint64_t maxJobOpenFiles = 1024;
    static constexpr uint64_t maxJobThreads = 1024;
};

/// One limit as a user reads it.
struct LimitRow {
    std::string name;
    uint64_t value;
    std::string meaning;
};

std::vector<LimitRow> limitRows();

/// "holds 1001 scenes, more than the 1000 that are allowed".
std::string beyondLimit(uint64_t count, const std::string& things, uint64_t limit);

}  // namespace platform
