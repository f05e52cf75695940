#pragma once

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "studio/Parts.h"
#include "studio/process/ChildProgram.h"
#include "studio/templates/TemplateBook.h"

namespace multiscene::studio {

/// Small videos of templates that bring none, made of their sample inputs when somebody wants to see one, one
/// at a time and behind everything else, and kept as long as the template is the same. Studio queue.
class SampleVideos {
  public:
    explicit SampleVideos(const Parts& parts) : parts_(parts) {}

    using Ready =
        std::function<void(const std::string& file)>;  ///< in the cache's folder; empty: there is none
    /// `isWanted` is asked before the work begins: who looks through many templates waits for few.
    void find(const BookedTemplate& booked, std::function<bool()> isWanted, Ready ready);
    void stop();

  private:
    struct Wish {
        std::string file;
        std::vector<std::string> words;
        std::function<bool()> isWanted;
        Ready ready;
    };

    std::string fileOf(const BookedTemplate& booked) const;
    std::vector<std::string> wordsOf(const BookedTemplate& booked) const;
    std::filesystem::path makingOf(const std::string& file) const;
    void next();
    void made(const std::string& file, bool isWell);

    const Parts parts_;
    std::deque<Wish> wishes_;
    std::set<std::string> failed_;  ///< which would fail again
    std::unique_ptr<ChildProgram> run_;
    bool isStopped_ = false;
};

}  // namespace multiscene::studio
