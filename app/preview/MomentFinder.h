#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "app/job/PreparedGroup.h"
#include "videoRenderCore/QVMediaManage.h"

namespace multiscene {

/// Finds the frame in which each input of a template is seen best: what shows it is large, and stands still.
/// Plays the group once on its own for that, without drawing. Main thread, which pumps the main queue.
class MomentFinder {
  public:
    /// Frames by the keys of inputs; one that no node shows has the frame in the middle of all.
    using Moments = std::map<std::string, int64_t>;

    /// `found` is called once, on the main queue, unless this ends before.
    MomentFinder(const PreparedGroup& group, std::function<void(const Moments&)> found);
    ~MomentFinder();
    MomentFinder(const MomentFinder&) = delete;
    MomentFinder& operator=(const MomentFinder&) = delete;

  private:
    struct Watch;

    const std::shared_ptr<Watch> watch_;
    std::shared_ptr<QVMultiSceneRenderManager> driver_;
    std::shared_ptr<QVMediaManage> player_;
};

}  // namespace multiscene
