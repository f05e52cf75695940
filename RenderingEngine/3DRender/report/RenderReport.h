#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace multiscene {

/// What the engine skipped, or did otherwise than asked for, while it rendered: the render path reports
/// nothing and draws nothing, and this list is shown once, in the summary of a job. All operations are safe
/// from any thread.
class RenderReport {
  public:
    struct Entry {
        std::string what;   ///< "missing file", "shader failed", …; "is longer than …" of what was used
        std::string name;   ///< the file, key or shader
        std::string scene;  ///< the scene file, its folder or the scene's identifier
        std::string node;   ///< the node's name or type
        bool isLeftOut = true;  ///< else it was used, and `what` says in what way
        bool operator==(const Entry&) const = default;
    };

    /// Remembers an entry; the same entry again is not listed twice.
    void add(Entry entry);
    std::vector<Entry> entries() const;

  private:
    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
};

}  // namespace multiscene
