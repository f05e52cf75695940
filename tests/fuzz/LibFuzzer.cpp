// One target a run: the one that MULTISCENE_FUZZ_TARGET names.
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/FuzzTarget.h"

namespace {

const multiscene::fuzz::FuzzTarget* target = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    const char* name = std::getenv("MULTISCENE_FUZZ_TARGET");
    target = multiscene::fuzz::findFuzzTarget(name ? name : "");
    if (target) return 0;
    std::fputs("set MULTISCENE_FUZZ_TARGET to one of:\n", stderr);
    for (const auto& each : multiscene::fuzz::fuzzTargets())
        std::fprintf(stderr, "  %.*s\n", static_cast<int>(each.name.size()), each.name.data());
    std::exit(2);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    target->play({data, size});
    return 0;
}
