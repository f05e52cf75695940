// What is thrown at the parsers: each target takes any bytes and must come back in little time and memory.
// The same targets are played by libFuzzer (LibFuzzer.cpp) and, with a mutator of our own, by a test
// (FuzzTest.cpp).
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/base/Error.h"

namespace multiscene::fuzz {

using Bytes = std::span<const uint8_t>;

struct FuzzTarget {
    std::string_view name;  ///< its folder in tests/fuzz/corpus
    void (*play)(Bytes);    ///< main thread
    size_t mostBytes;       ///< longer inputs find nothing new, only slowly
};

/// In alphabetical order.
std::span<const FuzzTarget> fuzzTargets();
/// Null for a name that is none.
const FuzzTarget* findFuzzTarget(std::string_view name);

/// Runs `work`; a clear refusal is fine, and gives false. Everything else that is thrown is a fault.
template <typename Work>
bool isTaken(const Work& work) {
    try {
        work();
        return true;
    } catch (const platform::Error&) {
        return false;
    }
}

/// What must hold whatever the input is. Ends the process with `claim` when it does not.
void require(bool holds, const char* claim);

inline std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
inline std::vector<uint8_t> copyOf(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

void playCommandLine(Bytes);
void playCornerPinTrack(Bytes);
void playFilm(Bytes);
void playFont(Bytes);
void playHttpHead(Bytes);
void playHttpRequest(Bytes);
void playInstallation(Bytes);
void playJson(Bytes);
void playMesh(Bytes);
void playNumbers(Bytes);
void playPhoto(Bytes);
void playPropertyList(Bytes);
void playPvr(Bytes);
void playRepeated(Bytes);
void playScene(Bytes);
void playSceneGroup(Bytes);
void playServerList(Bytes);
void playShaderDescription(Bytes);
void playShaderGrammar(Bytes);
void playShaderText(Bytes);
void playSound(Bytes);
void playTemplate(Bytes);
void playTemplateFile(Bytes);
void playText(Bytes);
void playTextModel(Bytes);
void playWorkerMessage(Bytes);
void playZip(Bytes);

}  // namespace multiscene::fuzz
