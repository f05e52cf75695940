#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {

/// How much a template, and a user's photo, may ask for. Far above what any needs, and low enough that what
/// is within them ends in time and fits into memory.
struct Limits {
    static constexpr uint64_t maxRecords = 1000;
    static constexpr uint64_t maxGroupScenes = 1000;
    static constexpr uint64_t maxSceneNodes = 20'000;
    static constexpr uint64_t maxSceneFiles = 2000;
    static constexpr uint64_t maxShaderBytes = uint64_t(64) << 10;
    static constexpr uint64_t maxPictureBytes = uint64_t(256) << 20;
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
