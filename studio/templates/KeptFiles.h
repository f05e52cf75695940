#pragma once

#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "studio/Parts.h"
#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// Files in the cache that runs of the program make when somebody wants to see them, one at a time and behind
/// everything else. What one shows is in its name: "sample-1100-a357598b4ab477fb.mp4" makes way for another
/// "sample-1100-…". Studio queue.
class KeptFiles {
  public:
    /// Removes what an earlier studio was making.
    explicit KeptFiles(const Parts& parts);

    struct Wish {
        std::string file;
        std::vector<std::string> words;  ///< of a run that writes what follows them, its "-o"
        std::function<bool()> isWanted;  ///< asked before the run: who looks at many things waits for few
        std::function<void(const std::string& file)> ready;  ///< empty: it cannot be made
    };
    void find(Wish wish);
    void stop();

  private:
    using Clock = std::chrono::steady_clock;

    bool hasJustFailed(const std::string& file);
    std::filesystem::path makingOf(const std::string& file) const;
    void next();
    void made(const std::string& file, bool isWell);
    bool publish(const std::string& file) const;

    const Parts parts_;
    std::deque<Wish> wishes_;
    std::map<std::string, Clock::time_point> failed_;
    std::unique_ptr<ChildProgram> run_;
    bool isStopped_ = false;
};

}  // namespace multiscene::studio
