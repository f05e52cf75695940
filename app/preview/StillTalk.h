// What a program that wants stills and the worker that draws them say to each other: lines of JSON, each a
// dictionary; bytes follow a line that has "bytes".
//
// Asked, in "do":
//   open     template, values, width, folder: first; `folder` holds the files that values name. With "stays"
//            the values are the template's sample inputs, what is wrong with it is told and no end, and it is
//            opened anew whenever that is asked
//   still    id, values, frame: the newest counts, one that waits is overtaken by the next. With "stays"
//   there
//            is a "trial" instead of values: the name of one
//   trace    id, frame: what the frame consists of, with the values as they are; the newest counts
//   outline  id: what the video consists of
//   strip    id, every: every so manieth frame with the values as they are, while nothing else is asked
//   moments  id: the frame in which each input is seen best
// Told, in "event":
//   opened   name, frames, framesPerSecond, width, height, missing; with "stays" trials: their names
//   refused  code, message, file, key: what was to be opened is at fault; what was open before still is
//   still    id, frame, bytes: a JPEG follows
//   overtaken id; problem  id, code (as the program ends with), message, file, key
//   frame    id, frame, bytes: a JPEG of a strip; strip  id, isWhole: it has ended
//   moments  id, moments: frames by keys
//   trace, outline  id, bytes: JSON follows
#pragma once

#include <cstddef>

namespace multiscene::stillTalk {

inline constexpr const char* kOpen = "open";
inline constexpr const char* kStill = "still";
inline constexpr const char* kStrip = "strip";
inline constexpr const char* kMoments = "moments";
inline constexpr const char* kTrace = "trace";
inline constexpr const char* kOutline = "outline";

inline constexpr const char* kOpened = "opened";
inline constexpr const char* kRefused = "refused";
inline constexpr const char* kOvertaken = "overtaken";
inline constexpr const char* kProblem = "problem";
inline constexpr const char* kFrame = "frame";

/// Bytes of a line.
inline constexpr size_t kLongestLine = size_t{4} << 20;

}  // namespace multiscene::stillTalk
