#pragma once

#include <filesystem>
#include <string>

namespace multiscene::studio {

/// What lets the person at this machine in: a secret in the address that the program prints, and in a file
/// that only they can read. Each one opens the page once, and then the file has the next. Studio queue.
class StartKey {
  public:
    /// `page`: the page's address without the key. `opener`: a file that leads a browser there, as no other
    /// program may learn the key from a command line; empty: none. Throws platform::Error.
    StartKey(std::string page, std::filesystem::path file, std::filesystem::path opener);
    /// Removes the files.
    ~StartKey();
    StartKey(const StartKey&) = delete;
    StartKey& operator=(const StartKey&) = delete;

    /// "http://127.0.0.1:8484/#key=…"
    std::string url() const { return page_ + "#key=" + key_; }
    /// Whether this is the key; it is another one then.
    bool take(const std::string& key);

  private:
    void renew();

    const std::string page_;
    const std::filesystem::path file_, opener_;
    std::string key_;
};

}  // namespace multiscene::studio
