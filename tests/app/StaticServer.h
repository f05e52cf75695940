#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>

namespace multiscene::test {

/// nginx on loopback, offering a folder; ended with the object.
class StaticServer {
  public:
    /// Throws when nginx does not answer.
    StaticServer(const std::filesystem::path& folder, const std::filesystem::path& workFolder);
    ~StaticServer();
    StaticServer(const StaticServer&) = delete;
    StaticServer& operator=(const StaticServer&) = delete;

    std::string address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }

  private:
    bool answers() const;

    int port_ = 0;
    pid_t process_ = -1;
};

}  // namespace multiscene::test
