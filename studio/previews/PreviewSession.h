// A template that somebody fills in, and looks at meanwhile.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/http/EventStream.h"
#include "platform/http/Responder.h"
#include "studio/api/Problem.h"
#include "studio/jobs/TemplateFacts.h"
#include "studio/metrics/Counters.h"
#include "studio/previews/HeldProgram.h"
#include "studio/uploads/UploadStore.h"

namespace multiscene::studio {

/// What is known of an open preview. Its program may be gone, and is started again when something is asked.
/// Studio queue.
class PreviewSession {
  public:
    using Clock = std::chrono::steady_clock;
    using Moments = std::map<std::string, int64_t>;

    struct Opening {
        std::string id, session;
        TemplateFacts facts;
        int64_t width = 0;               ///< pixels
        std::filesystem::path folder;    ///< of the files that its values name; goes with it
        std::optional<Moments> moments;  ///< none: to be found
    };

    PreviewSession(const Parts& parts, Opening opening, UploadStore& uploads, Counters& counters);
    ~PreviewSession();
    PreviewSession(const PreviewSession&) = delete;
    PreviewSession& operator=(const PreviewSession&) = delete;

    const std::string& id() const { return opening_.id; }
    const std::string& session() const { return opening_.session; }
    Clock::time_point usedAt() const { return usedAt_; }
    bool hasProgram() const { return program_ != nullptr; }
    bool isBusy() const { return !opens_.empty() || !stills_.empty(); }
    /// What is asked next starts another one. None: it had none.
    std::unique_ptr<HeldProgram> dropProgram();

    /// Answers what it is once it is open: 201, or what is wrong.
    void open(const platform::Value& values, platform::http::Responder& responder);
    /// Answers a JPEG; 204 when another one was asked for meanwhile. Throws Problem.
    void still(const platform::Value& values, int64_t frame, platform::http::Responder& responder);
    /// Sends every so manieth frame as it is drawn.
    void strip(int64_t every, platform::http::EventStream stream);
    /// One of the last strip; none when it is not there.
    const std::string* frame(int64_t number) const;
    /// As the API shows it; nothing before it is open.
    platform::Value value() const;
    /// Where its programs come from.
    void setMakeProgram(std::function<std::unique_ptr<HeldProgram>()> make) {
        makeProgram_ = std::move(make);
    }
    /// Called when moments were found.
    void setOnMoments(std::function<void(const Moments&)> call) { onMoments_ = std::move(call); }

  private:
    struct Still {
        platform::http::Responder responder;
        int64_t frame = 0;
        platform::Value media;
        Clock::time_point asked = Clock::now();
    };
    struct Strip {
        int64_t id = 0, every = 1;
        platform::http::EventStream stream;
    };

    void start(const platform::Value& media);
    void ask(platform::Value::Dictionary line);
    void askStill(int64_t id, const Still& still);
    void askStrip();
    void hear(const platform::Value& line, const std::string& bytes);
    void hearOpened(const platform::Value& line);
    void hearMoments(const platform::Value& line);
    void hearFrame(const platform::Value& line, const std::string& bytes);
    void answerStill(int64_t id, platform::http::Answer answer);
    void answerOpens();
    void end(const ChildProgram::End& end);
    void askAgain();
    void failAll(const Problem& problem);
    void endStrip(bool isWhole);
    platform::Value mediaOf(const platform::Value& values);
    std::filesystem::path linked(const Upload& upload) const;

    const Parts parts_;
    Opening opening_;
    UploadStore& uploads_;
    Counters& counters_;
    std::unique_ptr<HeldProgram> program_;
    platform::Value opened_;  ///< what the program said
    platform::Value values_;  ///< the latest that were asked with
    platform::Value media_;   ///< that the program was started with
    std::function<std::unique_ptr<HeldProgram>()> makeProgram_;
    std::function<void(const Moments&)> onMoments_;
    std::vector<platform::http::Responder> opens_;
    std::map<int64_t, Still> stills_;
    int64_t lastId_ = 0;
    int lost_ = 0;  ///< programs, since the last picture
    std::optional<Strip> strip_;
    std::map<int64_t, std::string> frames_;
    Clock::time_point usedAt_ = Clock::now();
    std::shared_ptr<bool> isAlive_ = std::make_shared<bool>(true);
};

}  // namespace multiscene::studio
