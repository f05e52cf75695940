// Small templates that each have one fault.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/program/SmallTemplate.h"

namespace multiscene::test {

struct Fault {
    std::string name;
    std::string keyPath;  ///< of one finding
    std::string text;     ///< in its message or remedy
    std::function<void(SmallTemplate&)> make;
};

inline void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.name; }

/// Faults of keys, values, files and their agreement: those of faults.json, where one is added.
std::vector<Fault> faults();

/// Changes what the dictionary names: keys of "camera", "clock", "record", "description" and "node", which is
/// the photo's; "children" of it by the frames in which they start, "shader" for it, the scenes of a "group",
/// "files".
void makeFault(const platform::Value& fault, SmallTemplate& small);

/// Gives the quad of the template that key.
std::function<void(SmallTemplate&)> nodeWith(const std::string& key, const platform::Value& value);

/// A scene of a group, with a transition at its end where it has frames.
platform::Value entry(int sId, const std::string& identifier, int transitionFrames = 0, int type = 0);
/// "FpsInfo" from start to end.
platform::Value range(int start, int end);
platform::Value childStartingAt(int start);
std::function<void(SmallTemplate&)> image(const std::string& path);

}  // namespace multiscene::test
