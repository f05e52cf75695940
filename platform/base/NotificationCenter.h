#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform {

/// Broadcasts by name. Observers run on the posting thread, in the order in which they were added.
/// All operations are safe from any thread.
class NotificationCenter {
  public:
    using Handler = std::function<void()>;
    /// Keeps the observation alive; dropping it ends it. A handler that is running when its token is dropped
    /// on another thread is waited for.
    using Token = std::shared_ptr<void>;

    static NotificationCenter& shared();

    [[nodiscard]] Token addObserver(const std::string& name, Handler handler);
    void post(const std::string& name);

  private:
    NotificationCenter();
    struct Registry;
    std::shared_ptr<Registry> registry_;
};

}  // namespace platform
