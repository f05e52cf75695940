// What an author looks at while they write a template: its folder as it is saved.
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <list>
#include <memory>
#include <string>

#include "platform/http/EventStream.h"
#include "platform/http/Responder.h"
#include "platform/watch/FileWatch.h"
#include "studio/Parts.h"
#include "studio/process/ChildProgram.h"
#include "studio/workbench/BenchProgram.h"

namespace multiscene::studio {

/// One program draws what is looked at, a second one the trials, a third says what is wrong; each reads the
/// folder itself. Studio queue.
class Bench {
  public:
    using Responder = platform::http::Responder;

    /// `folder`: absolute.
    Bench(const Parts& parts, std::filesystem::path folder);
    ~Bench();
    Bench(const Bench&) = delete;
    Bench& operator=(const Bench&) = delete;

    /// As the API shows it.
    platform::Value state() const;
    /// Sends the state now and whenever it changes; before that, "saved" with the revision.
    void listen(platform::http::EventStream stream);
    /// A JPEG of the frame with the inputs of a trial; empty: the sample's.
    void still(int64_t frame, const std::string& trial, Responder responder);
    /// The same in small. All that are asked for are drawn, one after the other.
    void trial(const std::string& name, int64_t frame, Responder responder);
    /// What the frame consists of, as "trace" prints it.
    void values(int64_t frame, Responder responder);
    /// What the video consists of. Throws Problem: 404.
    platform::http::Answer outline() const;
    void stop();

  private:
    struct Wanted {
        std::string trial;
        int64_t frame;
        std::shared_ptr<Responder> responder;
    };

    void watch();
    void save();
    void hear(const platform::Value& line);
    void hearOfTrials(const platform::Value& line);
    void askOutline();
    void check();
    void drawNextTrial();
    void tellState();
    void tell(const std::string& name, const platform::Value& data);
    platform::Value findingOf(const platform::Value& line) const;
    std::string shownPath(const std::string& file) const;
    BenchProgram::Ends answering(std::shared_ptr<Responder> responder, const char* contentType);

    const Parts parts_;
    const std::filesystem::path folder_;
    platform::FileWatch watch_;
    BenchProgram main_, small_;
    std::unique_ptr<ChildProgram> check_;
    int64_t revision_ = 1, shown_ = 0, checked_ = 0;  ///< of the files: saved, open in main_, judged
    platform::Value opened_, refused_;                ///< what main_ said; the latter none once it is right
    platform::Value::Array findings_;
    platform::Value moments_;
    std::string outline_;
    std::deque<Wanted> wanted_;
    bool isDrawing_ = false;
    std::list<platform::http::EventStream> streams_;
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace multiscene::studio
