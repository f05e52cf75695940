// A run of the program that holds an author's template ready, as its files are saved.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/base/Value.h"
#include "studio/api/Problem.h"
#include "studio/previews/HeldProgram.h"

namespace multiscene::studio {

/// Is started when something is asked of it, and again when it has ended. Studio queue.
class BenchProgram {
  public:
    /// What became of a question: a picture or JSON; nothing when another one came in its place.
    struct Answer {
        int64_t frame = 0;
        std::string bytes;
    };
    struct Ends {
        std::function<void(const Answer&)> said;
        std::function<void(const Problem&)> failed;
    };
    /// Hears "opened", "refused" and "moments" (StillTalk.h). It may ask at once, but not destroy.
    using News = std::function<void(const platform::Value&)>;

    BenchProgram(const Parts& parts, std::filesystem::path folder, int64_t width, News news);
    ~BenchProgram();
    BenchProgram(const BenchProgram&) = delete;
    BenchProgram& operator=(const BenchProgram&) = delete;

    bool isRunning() const { return program_ != nullptr; }
    /// The template was saved. What is asked from now on is of its new state.
    void openAnew();
    /// One line of StillTalk.h without its id.
    void ask(platform::Value::Dictionary line, Ends ends);
    void findMoments();
    /// Ends it without waiting; what was asked fails.
    void stop();

  private:
    void start();
    void hear(const platform::Value& line, const std::string& bytes);
    void end(const ChildProgram::End& end);
    void failAll(const Problem& problem);

    const Parts parts_;
    const std::filesystem::path folder_;
    const int64_t width_;
    const News news_;
    std::unique_ptr<HeldProgram> program_;
    bool hasOpened_ = false;  ///< it has something to show
    uint64_t inode_ = 0;      ///< of the folder that it may read
    std::map<int64_t, Ends> asked_;
    int64_t lastId_ = 0;
};

}  // namespace multiscene::studio
