// An HTTP server on loopback that answers each connection with the next prepared bytes, however wrong they
// are.
#pragma once

#include <string>
#include <thread>
#include <vector>

namespace platform::test {

struct FaultyAnswer {
    std::string bytes;
    bool stall = false;      ///< keeps the connection open without another byte until the client goes away
    int bytesPerSecond = 0;  ///< 0: all at once
};

class FaultyServer {
  public:
    explicit FaultyServer(std::vector<FaultyAnswer> answers);
    ~FaultyServer();
    FaultyServer(const FaultyServer&) = delete;
    FaultyServer& operator=(const FaultyServer&) = delete;

    std::string url(const std::string& path = "/file.zip") const;
    /// The head of every request so far. Ask when the transfer is over.
    const std::vector<std::string>& requests() const { return requests_; }

  private:
    void serve();

    std::vector<FaultyAnswer> answers_;
    std::vector<std::string> requests_;
    int listener_ = -1;
    int port_ = 0;
    std::thread thread_;
};

}  // namespace platform::test
