#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace multiscene::studio {

/// What jobs need to know of a template that can be made.
struct TemplateFacts {
    struct Input {
        std::string key, kind;  ///< "text", "photo", "video"
        std::string label;
        int64_t maxCharacters = 0, maxLines = 0;  ///< 0: any number
    };

    int64_t id = 0;
    std::string title;   ///< in the language that was asked for
    std::string source;  ///< what "make" is given: its folder, or its number
    std::string folder;  ///< where it lies; empty: nowhere
    int64_t frames = 0;  ///< below 1: unknown
    int framesPerSecond = 30, width = 0, height = 0;
    std::vector<Input> inputs;

    const Input* input(const std::string& key) const {
        for (const Input& each : inputs)
            if (each.key == key) return &each;
        return nullptr;
    }
};

/// None: there is no such template, or it is only offered. Studio queue.
using FindTemplate = std::function<std::optional<TemplateFacts>(int64_t id, const std::string& language)>;

}  // namespace multiscene::studio
