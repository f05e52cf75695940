#include "platform/fence/WorkerLimits.h"

#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include "platform/base/Error.h"

namespace platform {

namespace {

struct Named {
    std::string_view name;
    uint64_t WorkerLimits::*value;
};

constexpr std::array kNamed{
    Named{"maxJobMemory", &WorkerLimits::memoryBytes},
    Named{"maxJobCpuSeconds", &WorkerLimits::cpuSeconds},
    Named{"maxJobSeconds", &WorkerLimits::wallSeconds},
    Named{"maxStepCpuSeconds", &WorkerLimits::stepCpuSeconds},
    Named{"maxStepSeconds", &WorkerLimits::stepSeconds},
    Named{"maxJobFileBytes", &WorkerLimits::fileBytes},
    Named{"maxJobOpenFiles", &WorkerLimits::openFiles},
    Named{"maxJobThreads", &WorkerLimits::threads},
};

std::string knownNames() {
    std::string names;
    for (const Named& each : kNamed) names += (names.empty() ? "" : ", ") + std::string(each.name);
    return names;
}

void lower(__rlimit_resource_t resource, uint64_t most, uint64_t grace = 0) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0) return;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_cur, most);
    limit.rlim_max = std::min<rlim_t>(limit.rlim_max, most + grace);
    ::setrlimit(resource, &limit);
}

}  // namespace

void WorkerLimits::set(const std::string& nameAndValue) {
    const size_t equals = std::min(nameAndValue.find('='), nameAndValue.size());
    const std::string_view name = std::string_view(nameAndValue).substr(0, equals);
    const auto known =
        std::find_if(kNamed.begin(), kNamed.end(), [&](const Named& each) { return each.name == name; });
    if (known == kNamed.end())
        throw Error(ErrorKind::Usage,
                    "\"" + std::string(name) + "\" is no limit that can be changed: " + knownNames());
    const std::string_view text =
        std::string_view(nameAndValue).substr(std::min(equals + 1, nameAndValue.size()));
    uint64_t value = 0;
    constexpr uint64_t most = uint64_t{1} << 50;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || value < 1 || value > most)
        throw Error(ErrorKind::Usage, "\"" + nameAndValue + "\" is not NAME=NUMBER; the number is 1 or more");
    this->*(known->value) = value;
}

void WorkerLimits::apply() const {
    lower(RLIMIT_CORE, 0);
    lower(RLIMIT_CPU, cpuSeconds, 1);
    lower(RLIMIT_FSIZE, fileBytes);
    lower(RLIMIT_NOFILE, openFiles);
    if (!isSanitized()) lower(RLIMIT_DATA, memoryBytes * 2);
}

bool isSanitized() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#elif defined(__has_feature)
    return __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
    return false;
#endif
}

}  // namespace platform
