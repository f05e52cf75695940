#include "studio/metrics/AccessLog.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>

#include "platform/base/File.h"
#include "platform/base/Log.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

namespace {

platform::FileHandle opened(const std::filesystem::path& file) {
    platform::FileHandle handle = platform::openFile(file, O_WRONLY | O_APPEND | O_CREAT, 0600);
    if (!handle) throw platform::errnoError(errno, "cannot write", file.string());
    return handle;
}

}  // namespace

AccessLog::AccessLog(std::filesystem::path file) : file_(std::move(file)) { opened(file_); }

void AccessLog::write(const Router::Answered& answered) {
    char numbers[80];
    std::snprintf(numbers, sizeof numbers, " %d %llu %.1f\n", answered.status,
                  static_cast<unsigned long long>(answered.bytes),
                  static_cast<double>(answered.took.count()) / 1000);
    const std::string route = answered.pattern.empty() ? "-" : answered.pattern;
    try {
        platform::writeAll(opened(file_), timeText(nowMs()) + " " + answered.method + " " + route + numbers,
                           file_.string());
    } catch (const platform::Error& failure) {
        platform::log::info(failure.what());
    }
}

}  // namespace multiscene::studio
