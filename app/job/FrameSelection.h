#pragma once

#include <cstdint>
#include <set>

namespace multiscene {

/// Which frames of a group are wanted, counted from 0.
struct FrameSelection {
    std::set<int64_t> at;  ///< these; empty: every `every`th
    int64_t every = 1;     ///< from frame 0 on

    bool contains(int64_t frame) const { return at.empty() ? frame % every == 0 : at.contains(frame); }
    /// How many frames must be rendered to have them all.
    int64_t framesNeeded() const { return at.empty() ? INT64_MAX : *at.rbegin() + 1; }
    /// Throws platform::Error(Usage), naming the last frame, when a group of `frames` has not all of them.
    void requireWithin(int64_t frames) const;
    /// The same before anything is rendered, for the number of frames that the catalogue says; below 1: it
    /// does not.
    void requireAnnounced(int64_t frames) const {
        if (frames >= 1) requireWithin(frames);
    }
};

}  // namespace multiscene
