#pragma once

#include <functional>
#include <string>

namespace multiscene::studio {

/// The code that a device of the network is let in with: six digits, which the program and the page at this
/// machine show. It changes when it was used, and before anybody has tried enough of them. Studio queue.
class Pairing {
  public:
    /// `changed` is told each new code, the first one too.
    explicit Pairing(std::function<void(const std::string& code)> changed);

    const std::string& code() const { return code_; }
    /// Whether this is the code; it is another one then.
    bool take(const std::string& code);

  private:
    void renew();

    std::function<void(const std::string&)> changed_;
    std::string code_;
    int wrong_ = 0;
};

}  // namespace multiscene::studio
