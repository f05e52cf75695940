#include "tests/program/LimitTrial.h"

namespace multiscene::test {

Result PlayLimitsTest::inTime(std::vector<std::string> words, int cpuSeconds) const {
    const auto wanted = command(std::move(words));
    std::vector<std::string> all{"prlimit", "--cpu=" + std::to_string(cpuSeconds * sanitizerFactor())};
    all.insert(all.end(), wanted.begin(), wanted.end());
    return run(all);
}

Verdict PlayLimitsTest::verdict(std::vector<std::string> words) const {
    const Result result = inTime(std::move(words));
    EXPECT_LE(result.errorLines().size(), 1u) << result.errors.substr(0, 1000);
    return {result.exitCode, result.output + result.errors};
}

uint64_t Trial::most() const {
    for (const platform::Limit& row : platform::limits::kAll)
        if (row.name == limit) return tried ? tried : row.value;
    return 0;
}

Verdict verdictOf(const std::function<std::string()>& work) {
    try {
        const std::string said = work();
        return {said.empty() ? kAccepted : kTemplate, said};
    } catch (const platform::Error& error) {
        return {error.exitCode(), error.what()};
    }
}

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t turn = 0; turn < times; ++turn) all += text;
    return all;
}

}  // namespace multiscene::test
