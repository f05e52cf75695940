#include "app/Other/QVDownloadInfoManager.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "app/program/Settings.h"
#include "app/server/UrlText.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/net/HttpDownload.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;
using platform::Value;
namespace fs = std::filesystem;

namespace {

constexpr const char* kConfigurationPath = "severConfig/info1-1.plist";
constexpr const char* kFileName = "fe23fa79c74c";
constexpr double kMostSeconds =
    platform::limitOf<double>("maxListSeconds");  ///< for a list of a megabyte or so

/// "3 days ago".
std::string ageText(double seconds) {
    constexpr std::pair<double, const char*> units[] = {{86400, "day"}, {3600, "hour"}, {60, "minute"}};
    for (const auto& [length, unit] : units) {
        const auto count = static_cast<int64_t>(seconds / length);
        if (count > 0) return std::to_string(count) + " " + unit + (count == 1 ? " ago" : "s ago");
    }
    return "a moment ago";
}

bool hasScheme(const std::string& location) {
    const size_t end = location.find("://");
    return end != std::string::npos && location.find('/') > end;
}

}  // namespace

std::string QVDownloadInfoManager::serverAddress() const {
    const char* environment = std::getenv("MULTISCENE_SERVER");
    std::string address = serverAddress_.empty() && environment ? environment : serverAddress_;
    if (address.empty()) address = settingWithKey(kServerSetting);
    if (!address.empty() && address.back() != '/') address += '/';
    return address;
}

std::string QVDownloadInfoManager::saveInfoPath() const {
    return (platform::dataHome() / "downloadDirectory" / "data" / kFileName).string();
}

std::string QVDownloadInfoManager::infoUrl() const {
    const std::string address = serverAddress();
    if (address.empty())
        throw Error(ErrorKind::Usage,
                    "no template server is set: name one with --server or MULTISCENE_SERVER");
    return address + kConfigurationPath;
}

void QVDownloadInfoManager::downloadInfo(const std::function<bool()>& isCancelled) const {
    const fs::path fetched = saveInfoPath() + "." + platform::uniqueIdentifier();
    platform::createFolders(fetched.parent_path());
    try {
        downloadInfoTo(fetched, isCancelled);
        requireInfo(fetched);
        keepInfo(fetched);
    } catch (const Error& failure) {
        std::error_code ignored;
        fs::remove(fetched, ignored);
        throw withAge(failure);
    }
}

Error QVDownloadInfoManager::withAge(const Error& failure) const {
    const auto age = ageOfInfo();
    if (!age || failure.kind() == ErrorKind::Cancelled || failure.kind() == ErrorKind::Usage) return failure;
    return Error(failure.kind(), failure.message() + "; the list of " + ageText(*age) + " is kept",
                 failure.file(), failure.key());
}

void QVDownloadInfoManager::downloadInfoTo(const fs::path& file,
                                           const std::function<bool()>& isCancelled) const {
    platform::HttpDownloadOptions options;
    options.maxBytes = platform::PropertyListLimits().maxBytes;
    options.maxSeconds = kMostSeconds;
    options.isCancelled = isCancelled;
    platform::downloadToFile(infoUrl(), file, options);
}

void QVDownloadInfoManager::requireInfo(const fs::path& file) const {
    const auto bytes = platform::readFile(file, platform::PropertyListLimits().maxBytes);
    const std::string shown = platform::withoutCredentials(infoUrl());
    if (!platform::parsePropertyList(bytes, shown, ErrorKind::Failed).isDictionary())
        throw Error(ErrorKind::Failed, "is no list of templates", shown);
}

void QVDownloadInfoManager::keepInfo(const fs::path& file) const {
    platform::createFolders(fs::path(saveInfoPath()).parent_path());
    platform::moveFile(file, saveInfoPath());
}

std::optional<double> QVDownloadInfoManager::ageOfInfo() const {
    std::error_code failure;
    const auto written = fs::last_write_time(saveInfoPath(), failure);
    if (failure) return std::nullopt;
    return std::chrono::duration<double>(fs::file_time_type::clock::now() - written).count();
}

Value QVDownloadInfoManager::info() const {
    if (!platform::isThere(saveInfoPath())) return {};
    return platform::readPropertyList(saveInfoPath(), ErrorKind::Failed);
}

Value::Array QVDownloadInfoManager::getSeverTempletData() const { return info().array("severTempletData"); }
bool QVDownloadInfoManager::isVideoCache() const { return info().boolean("isVideoCache"); }
bool QVDownloadInfoManager::isWechatTimelineShare() const { return info().boolean("isWechatTimelineShare"); }

std::vector<QVSeverTempletDataModel> QVDownloadInfoManager::severTemplets() const {
    std::vector<QVSeverTempletDataModel> templates;
    for (const Value& offered : getSeverTempletData())
        if (offered.isDictionary())
            templates.push_back(QVSeverTempletDataModel::severTempletDataModelWithDic(offered));
    return templates;
}

std::optional<QVSeverTempletDataModel> QVDownloadInfoManager::findSeverTemplet(
    const std::string& wanted) const {
    for (const QVSeverTempletDataModel& offered : severTemplets())
        if (std::to_string(offered.sId()) == wanted || templateNameOfUrl(offered.templateUrl()) == wanted ||
            offered.sceneName() == wanted)
            return offered;
    return std::nullopt;
}

std::string QVDownloadInfoManager::completeUrl(const std::string& location) const {
    if (hasScheme(location)) return location;
    return serverAddress() + location.substr(std::min(location.find_first_not_of('/'), location.size()));
}

}  // namespace multiscene
