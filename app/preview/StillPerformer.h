// The worker that draws stills for a program, with one video held ready (StillTalk.h).
#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <thread>

#include "app/preview/HeldPlayer.h"
#include "app/preview/MomentFinder.h"
#include "platform/base/LineSocket.h"
#include "platform/base/Value.h"

namespace multiscene {

/// Main thread; pumps the main queue.
class StillPerformer {
  public:
    /// The request is what was asked for in "open".
    StillPerformer(platform::FileHandle asker, const RenderRequest& request, JobObserver& observer,
                   std::stop_token stop);
    ~StillPerformer();

    /// Until the asker is gone. Throws platform::Error: what is wrong with what was to be opened.
    void run();

  private:
    struct Asked {
        int64_t id = 0, frame = 0;
        platform::Value values;
    };
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

    void open();
    void performStill(const Asked& asked);
    void setValues(const platform::Value& values);
    void performStrip();
    void startStrip(const Asked& asked);
    void endStrip(bool isWhole);
    void findMoments(int64_t id);
    /// The frame that is shown, or nothing when it was given up.
    std::optional<int64_t> show(int64_t frame, const std::function<bool()>& isGivenUp);
    void tell(const std::string& event, platform::Value::Dictionary fields, const std::string& bytes = {});
    void tellPicture(const char* event, int64_t id, int64_t frame);
    void tellProblem(int64_t id, const platform::Error& error);

    platform::LineSocket asker_;
    const RenderRequest& request_;
    JobObserver& observer_;
    const std::stop_token stop_;
    std::unique_ptr<HeldPlayer> player_;
    std::unique_ptr<MomentFinder> moments_;
    platform::Value values_;  ///< that the player has
    std::vector<uint8_t> picture_;
    std::optional<Strip> strip_;
    double shownAt_ = 0, workedAt_ = 0, signedAt_ = 0;

    std::mutex mutex_, writing_;
    bool isClosed_ = false;
    std::optional<Asked> still_, stripAsked_;
    std::optional<int64_t> momentsAsked_;
    std::thread listener_;
};

}  // namespace multiscene
