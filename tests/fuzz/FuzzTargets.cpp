#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/FuzzTarget.h"

namespace multiscene::fuzz {

std::span<const FuzzTarget> fuzzTargets() {
    static constexpr FuzzTarget targets[] = {
        {"command-line", playCommandLine, 1024},
        {"corner-pin-track", playCornerPinTrack, 8192},
        {"film", playFilm, 16384},
        {"font", playFont, 16384},
        {"http-head", playHttpHead, 2048},
        {"http-request", playHttpRequest, 4096},
        {"installation", playInstallation, 8192},
        {"json", playJson, 8192},
        {"mesh", playMesh, 8192},
        {"numbers", playNumbers, 512},
        {"photo", playPhoto, 8192},
        {"property-list", playPropertyList, 8192},
        {"pvr", playPvr, 8192},
        {"repeated", playRepeated, 512},
        {"scene", playScene, 16384},
        {"scene-group", playSceneGroup, 8192},
        {"server-list", playServerList, 8192},
        {"shader-description", playShaderDescription, 4096},
        {"shader-grammar", playShaderGrammar, 1024},
        {"shader-text", playShaderText, 65536},
        {"sound", playSound, 16384},
        {"template", playTemplate, 4096},
        {"template-file", playTemplateFile, 8192},
        {"text", playText, 1024},
        {"text-model", playTextModel, 4096},
        {"worker-message", playWorkerMessage, 4096},
        {"zip", playZip, 8192},
    };
    return targets;
}

const FuzzTarget* findFuzzTarget(std::string_view name) {
    const auto targets = fuzzTargets();
    const auto found = std::find_if(targets.begin(), targets.end(),
                                    [&](const FuzzTarget& each) { return each.name == name; });
    return found == targets.end() ? nullptr : &*found;
}

void require(bool holds, const char* claim) {
    if (holds) return;
    std::fprintf(stderr, "fuzz: does not hold: %s\n", claim);
    std::abort();
}

}  // namespace multiscene::fuzz
