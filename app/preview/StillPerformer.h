// The worker that draws stills for a program, with one video held ready (StillTalk.h).
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

#include "app/preview/HeldPlayer.h"
#include "app/preview/MomentFinder.h"
#include "app/workbench/TrialInputs.h"
#include "platform/base/LineSocket.h"
#include "platform/base/Value.h"

namespace multiscene {

/// Main thread; pumps the main queue.
class StillPerformer {
  public:
    /// The request is what was asked for in "open". `stays`: see there.
    StillPerformer(platform::FileHandle asker, RenderRequest request, bool stays, JobObserver& observer,
                   std::stop_token stop);
    ~StillPerformer();

    /// Until the asker is gone. Throws platform::Error: what is wrong with what was to be opened.
    void run();

  private:
    struct Asked {
        int64_t id = 0, frame = 0;
        platform::Value values;
        std::string trial;
    };
    /// What is to be done next; empty: nothing.
    using Work = std::function<void()>;
    struct Strip {
        int64_t id = 0;
        std::set<int64_t> frames;  ///< that are left
    };

    void listen();
    void take(const platform::Value& line);
    void wake();
    bool isOver();
    bool hasWork();
    bool isBetterAsked(int64_t frame);

    Work nextWork();
    void open();
    void openAgain();
    void requireOpen() const;
    void useSample();
    void tellOpened();
    void performStill(const Asked& asked);
    void setValues(const Asked& asked);
    void setTrial(const std::string& name);
    void performTrace(const Asked& asked);
    void tellOutline(int64_t id);
    void performStrip();
    void startStrip(const Asked& asked);
    void endStrip(bool isWhole);
    void findMoments(int64_t id);
    /// The frame that is shown, or nothing when it was given up.
    std::optional<int64_t> show(int64_t frame, const std::function<bool()>& isGivenUp);
    platform::Canvas canvas();
    void tell(const std::string& event, platform::Value::Dictionary fields, const std::string& bytes = {});
    void tellPicture(const char* event, int64_t id, int64_t frame);
    void tellProblem(const char* event, int64_t id, const platform::Error& error);

    platform::LineSocket asker_;
    RenderRequest request_;
    const bool stays_;
    JobObserver& observer_;
    const std::stop_token stop_;
    std::unique_ptr<HeldPlayer> player_;
    std::unique_ptr<MomentFinder> moments_;
    platform::Value values_;  ///< that the player has
    std::string trial_;       ///< or the inputs of this one
    std::vector<TrialInputs> trials_;
    std::vector<uint8_t> picture_;
    std::optional<Strip> strip_;
    double shownAt_ = 0, workedAt_ = 0, signedAt_ = 0;

    std::mutex mutex_, writing_;
    bool isClosed_ = false, isOpenAsked_ = true;
    std::optional<Asked> still_, stripAsked_, traceAsked_;
    std::optional<int64_t> momentsAsked_, outlineAsked_;
    std::thread listener_;
};

}  // namespace multiscene
