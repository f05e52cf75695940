// What a program that wants stills and the worker that draws them say to each other: lines of JSON, each a
// dictionary; bytes follow a line that has "bytes".
//
// Asked, in "do":
//   open     template, values, width, folder: first and once; `folder` holds the files that values name
//   still    id, values, frame: the newest counts, one that waits is overtaken by the next
//   strip    id, every: every so manieth frame with the values as they are, while nothing else is asked
//   moments  id: the frame in which each input is seen best
// Told, in "event":
//   opened   name, frames, framesPerSecond, width, height, missing
//   still    id, frame, bytes: a JPEG follows
//   overtaken id; problem  id, code (as the program ends with), message, file, key
//   frame    id, frame, bytes: a JPEG of a strip; strip  id, isWhole: it has ended
//   moments  id, moments: frames by keys
#pragma once

#include <cstddef>

namespace multiscene::stillTalk {

inline constexpr const char* kOpen = "open";
inline constexpr const char* kStill = "still";
inline constexpr const char* kStrip = "strip";
inline constexpr const char* kMoments = "moments";

inline constexpr const char* kOpened = "opened";
inline constexpr const char* kOvertaken = "overtaken";
inline constexpr const char* kProblem = "problem";
inline constexpr const char* kFrame = "frame";

/// Bytes of a line.
inline constexpr size_t kLongestLine = size_t{4} << 20;

}  // namespace multiscene::stillTalk
