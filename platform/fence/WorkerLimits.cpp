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
    uint64_t WorkerLimits::*start = nullptr;  ///< of a most: what a job begins with
};

constexpr std::array kNamed{
    Named{"jobMemory", &WorkerLimits::firstMemoryBytes},
    Named{"jobMemoryPerPixel", &WorkerLimits::memoryBytesPerPixel},
    Named{"maxJobMemory", &WorkerLimits::memoryBytes, &WorkerLimits::firstMemoryBytes},
    Named{"jobSeconds", &WorkerLimits::firstSeconds},
    Named{"jobMillisecondsPerFrame", &WorkerLimits::millisecondsPerFrame},
    Named{"jobNanosecondsPerPixel", &WorkerLimits::nanosecondsPerPixel},
    Named{"maxJobCpuSeconds", &WorkerLimits::cpuSeconds, &WorkerLimits::firstSeconds},
    Named{"maxJobSeconds", &WorkerLimits::wallSeconds, &WorkerLimits::firstSeconds},
    Named{"maxStepCpuSeconds", &WorkerLimits::stepCpuSeconds},
    Named{"maxStepSeconds", &WorkerLimits::stepSeconds},
    Named{"jobFileBytes", &WorkerLimits::firstFileBytes},
    Named{"jobFileBytesPerPixel", &WorkerLimits::fileBytesPerPixel},
    Named{"maxJobFileBytes", &WorkerLimits::fileBytes, &WorkerLimits::firstFileBytes},
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
    if (known->start) this->*(known->start) = std::max(this->*(known->start), value);
}

WorkerLimits WorkerLimits::forJob(int64_t frames, int64_t pixels) const {
    WorkerLimits limits = *this;
    if (frames < 0) return limits;
    // Doubles: whatever a template says, nothing overflows, and nobody asks for the last second.
    const auto least = [](uint64_t most, double wanted) {
        return wanted < static_cast<double>(most) ? static_cast<uint64_t>(wanted) : most;
    };
    const auto all = static_cast<double>(frames), each = static_cast<double>(std::max<int64_t>(pixels, 0));
    constexpr double milli = 1e-3, nano = 1e-9;
    const double seconds =
        static_cast<double>(firstSeconds) + all * (static_cast<double>(millisecondsPerFrame) * milli +
                                                   each * static_cast<double>(nanosecondsPerPixel) * nano);
    limits.cpuSeconds = least(cpuSeconds, seconds);
    limits.wallSeconds = least(wallSeconds, seconds);
    limits.memoryBytes = least(
        memoryBytes, static_cast<double>(firstMemoryBytes) + each * static_cast<double>(memoryBytesPerPixel));
    limits.fileBytes = least(
        fileBytes, static_cast<double>(firstFileBytes) + all * each * static_cast<double>(fileBytesPerPixel));
    return limits;
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
