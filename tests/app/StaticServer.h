#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace multiscene::test {

/// nginx on loopback, offering a folder; ended with the object.
class StaticServer {
  public:
    /// Throws when nginx does not answer. With `isHttps` it shows a certificate for 127.0.0.1 that is its own
    /// authority: certificate().
    StaticServer(const std::filesystem::path& folder, const std::filesystem::path& workFolder,
                 bool isHttps = false);
    ~StaticServer();
    StaticServer(const StaticServer&) = delete;
    StaticServer& operator=(const StaticServer&) = delete;

    std::string address(const std::string& host = "127.0.0.1") const {
        return (certificate_.empty() ? "http://" : "https://") + host + ":" + std::to_string(port_) + "/";
    }
    const std::filesystem::path& certificate() const { return certificate_; }

  private:
    bool answers() const;

    int port_ = 0;
    std::filesystem::path certificate_;
    pid_t process_ = -1;
};

}  // namespace multiscene::test
