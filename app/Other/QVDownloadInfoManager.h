// The list of templates that the template server offers.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "app/Model/QVSeverTempletDataModel.h"
#include "platform/base/Error.h"

namespace multiscene {

/// Fetches the server's configuration, keeps it in the data home and answers from that copy. For one
/// thread at a time.
class QVDownloadInfoManager {
  public:
    /// The server's base address, without the path of the configuration. Unless set: MULTISCENE_SERVER, else
    /// the setting of the data home.
    void setServerAddress(const std::string& address) { serverAddress_ = address; }
    std::string serverAddress() const;

    /// Fetches the configuration afresh; the copy of before stays until the new one is there. Throws Error:
    /// Usage when no server is set, else as downloadToFile; Failed when the answer is no property list. The
    /// message says how old the kept copy is.
    void downloadInfo(const std::function<bool()>& isCancelled = {}) const;

    /// The parts of downloadInfo(), for a program that does them in different processes: fetching alone,
    /// judging what was fetched, keeping it. Throw Error as downloadInfo() does, without the age.
    void downloadInfoTo(const std::filesystem::path& file,
                        const std::function<bool()>& isCancelled = {}) const;
    void requireInfo(const std::filesystem::path& file) const;
    void keepInfo(const std::filesystem::path& file) const;
    /// A failure of theirs, with the age of the copy that stays.
    platform::Error withAge(const platform::Error& failure) const;

    /// Seconds since the kept copy was fetched; nothing when there is none.
    std::optional<double> ageOfInfo() const;

    /// The kept copy.
    std::string saveInfoPath() const;

    /// "severTempletData" of the kept copy; empty when there is none.
    platform::Value::Array getSeverTempletData() const;
    bool isVideoCache() const;
    bool isWechatTimelineShare() const;

    std::vector<QVSeverTempletDataModel> severTemplets() const;
    /// By number, by the name of its archive, or by its display name.
    std::optional<QVSeverTempletDataModel> findSeverTemplet(const std::string& numberOrName) const;
    /// A location of the configuration as a complete URL: one without a scheme is below the server's address.
    std::string completeUrl(const std::string& location) const;

  private:
    std::string infoUrl() const;
    platform::Value info() const;

    std::string serverAddress_;
};

}  // namespace multiscene
