#include "app/Other/QVDownloadInfoManager.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "app/Other/Settings.h"
#include "app/Other/UrlText.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
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

bool hasScheme(const std::string& location) {
    const size_t end = location.find("://");
    return end != std::string::npos && location.find('/') > end;
}

}  // namespace

QVDownloadInfoManager& QVDownloadInfoManager::sharedInstance() {
    static QVDownloadInfoManager manager;
    return manager;
}

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

void QVDownloadInfoManager::downloadInfo(const std::function<bool()>& isCancelled) const {
    const std::string address = serverAddress();
    if (address.empty())
        throw Error(ErrorKind::Usage,
                    "no template server is set: name one with --server or MULTISCENE_SERVER");
    const fs::path saved = saveInfoPath(), fetched = saved.string() + "." + platform::uniqueIdentifier();
    platform::createFolders(saved.parent_path());
    std::error_code ignored;
    fs::remove(saved, ignored);

    platform::HttpDownloadOptions options;
    options.maxBytes = platform::PropertyListLimits().maxBytes;
    options.isCancelled = isCancelled;
    const std::string url = address + kConfigurationPath;
    platform::downloadToFile(url, fetched, options);
    try {
        const auto bytes = platform::readFile(fetched, options.maxBytes);
        if (!platform::parsePropertyList(bytes, url, ErrorKind::Failed).isDictionary())
            throw Error(ErrorKind::Failed, "is no list of templates", url);
        platform::moveFile(fetched, saved);
    } catch (...) {
        fs::remove(fetched, ignored);
        throw;
    }
}

Value QVDownloadInfoManager::info() const {
    std::error_code ignored;
    if (!fs::exists(saveInfoPath(), ignored)) return {};
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
